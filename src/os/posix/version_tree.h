// The VS_VERSIONINFO tree: nodes of a 16-bit length, a value length, a type
// (1 for text, whose value length counts 16-bit units), a zero-terminated
// UTF-16 key, then the value and the children, each at a 4-byte boundary of
// the tree. Every length is taken as no more than the room its parent
// leaves, so that a tree that lies about its lengths reads as a smaller one.
#pragma once

#include <cstddef>
#include <string_view>

#include "nvk/os/types.h"

namespace nvk::os::posix {

struct VersionNode {
    std::size_t end = 0;  // one past its last byte, within the tree
    WORD valueLength = 0;
    WORD type = 0;
    std::size_t keyOffset = 0;
    std::size_t keyUnits = 0;
    std::size_t valueOffset = 0;
    std::size_t valueBytes = 0;  // what of the value the node holds
    std::size_t children = 0;
};

// The root of a tree of `size` bytes at `tree`.
bool VersionRoot(const BYTE* tree, std::size_t size, VersionNode& root);
// The node reached from the root by the names of `path`, separated by '\'
// ("\" and "" give the root itself).
bool FindVersionNode(const BYTE* tree, std::size_t size, std::string_view path, VersionNode& found);

}  // namespace nvk::os::posix
