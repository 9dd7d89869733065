#!/bin/sh
# Prints the package ids of the driver for file systems in user space, one per line, when it is installed: there is
# a mount helper and the kernel offers the device. Whether this user may open the device is for whoever mounts to tell;
# installing the driver again would not change it. Prints nothing otherwise.
if command -v fusermount3 >/dev/null && [ -c /dev/fuse ]; then
    printf '%s\n' com.github.osxfuse.pkg.Core com.github.osxfuse.pkg.PrefPane
fi
