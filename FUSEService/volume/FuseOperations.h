#pragma once

struct fuse_lowlevel_ops;

namespace volume
{

/// The volume's file operations for the kernel; the session's user data is a VolumeCore.
const fuse_lowlevel_ops &fuseOperations();

// Parts of the table.
void addFolderOperations(fuse_lowlevel_ops &operations);
void addFileOperations(fuse_lowlevel_ops &operations);

} // namespace volume
