# Installs the driver for file systems in user space with the system's package manager. The administrator is asked
# through the desktop's own dialog; the disk image given as first argument is for hosts that bring no such package.
if command -v apt-get >/dev/null 2>&1; then
    set -- apt-get install -y fuse3
elif command -v dnf >/dev/null 2>&1; then
    set -- dnf install -y fuse3
elif command -v zypper >/dev/null 2>&1; then
    set -- zypper --non-interactive install fuse3
elif command -v pacman >/dev/null 2>&1; then
    set -- pacman -S --noconfirm fuse3
else
    echo "No package manager is known here: please install fuse3" >&2
    exit 1
fi
if [ "$(id -u)" -eq 0 ]; then
    exec "$@"
fi
exec pkexec "$@"
