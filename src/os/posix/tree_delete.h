// The emptying of a folder tree relative to open folders, shared by the tree
// deletions of the layer.
#pragma once

namespace nvk::os::posix {

// Deletes everything the open folder `folder` holds, links as themselves.
// False at the first failure, with errno set.
bool EmptyOpenFolder(int folder);

}  // namespace nvk::os::posix
