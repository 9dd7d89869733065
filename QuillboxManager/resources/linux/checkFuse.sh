#!/bin/sh
# Prints the package ids of the driver for file systems in user space, one per line, when it works for this user:
# the mount helper answers and the kernel's device may be opened. Prints nothing otherwise.
if fusermount3 --version >/dev/null 2>&1 && [ -c /dev/fuse ] && [ -r /dev/fuse ] && [ -w /dev/fuse ]; then
    printf '%s\n' com.github.osxfuse.pkg.Core com.github.osxfuse.pkg.PrefPane
fi
