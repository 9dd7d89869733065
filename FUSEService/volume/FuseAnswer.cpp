#include "volume/FuseAnswer.h"

namespace volume::answering
{

fuse_entry_param entryFor(fuse_req_t request, const Node &node)
{
    fuse_entry_param entry = {};
    entry.ino = node.inode;
    entry.attr = attributesOf(node, core(request).created());
    entry.attr_timeout = entry.entry_timeout = kernelLife;
    return entry;
}

void replyEntry(fuse_req_t request, const Node &node)
{
    VolumeTree &nodes = tree(request);
    const fuse_entry_param entry = entryFor(request, node);
    if (fuse_reply_entry(request, &entry) != 0)
        nodes.nodeTable().forget(node.inode, 1);
}

void replyAttributes(fuse_req_t request, const Node &node)
{
    const struct stat attributes = attributesOf(node, core(request).created());
    fuse_reply_attr(request, &attributes, kernelLife);
}

} // namespace volume::answering
