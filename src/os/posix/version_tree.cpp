#include "os/posix/version_tree.h"

#include <algorithm>
#include <cstring>

#include "os/posix/names.h"

namespace nvk::os::posix {

namespace {

std::size_t Align(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

WORD WordAt(const BYTE* tree, std::size_t offset) {
    WORD value = 0;
    std::memcpy(&value, tree + offset, sizeof value);
    return value;
}

// The node at `offset`, no longer than `limit`.
bool ReadNode(const BYTE* tree, std::size_t offset, std::size_t limit, VersionNode& node) {
    if (offset > limit || limit - offset < 6) {
        return false;
    }
    const std::size_t length = std::min<std::size_t>(WordAt(tree, offset), limit - offset);
    if (length < 6) {
        return false;
    }
    node.end = offset + length;
    node.valueLength = WordAt(tree, offset + 2);
    node.type = WordAt(tree, offset + 4);
    node.keyOffset = offset + 6;
    node.keyUnits = 0;
    while (node.keyOffset + 2 * node.keyUnits + 2 <= node.end &&
           WordAt(tree, node.keyOffset + 2 * node.keyUnits) != 0) {
        ++node.keyUnits;
    }
    node.valueOffset = std::min(Align(node.keyOffset + 2 * node.keyUnits + 2), node.end);
    const std::size_t valueBytes =
        node.type == 1 ? 2 * std::size_t{node.valueLength} : node.valueLength;
    node.valueBytes = std::min(valueBytes, node.end - node.valueOffset);
    node.children = std::min(Align(node.valueOffset + valueBytes), node.end);
    return true;
}

// Whether the key of `node` is `name`, without regard to case.
bool KeyIs(const BYTE* tree, const VersionNode& node, std::string_view name) {
    if (node.keyUnits != name.size()) {
        return false;
    }
    for (std::size_t i = 0; i < name.size(); ++i) {
        const WORD unit = WordAt(tree, node.keyOffset + 2 * i);
        if (unit > 0xFF || FoldCase(static_cast<char>(unit)) != FoldCase(name[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool VersionRoot(const BYTE* tree, std::size_t size, VersionNode& root) {
    return ReadNode(tree, 0, size, root);
}

bool FindVersionNode(const BYTE* tree, std::size_t size, std::string_view path,
                     VersionNode& found) {
    if (!VersionRoot(tree, size, found)) {
        return false;
    }
    while (!path.empty()) {
        const std::size_t slash = path.find('\\');
        const std::string_view name = path.substr(0, slash);
        path = slash == std::string_view::npos ? std::string_view{} : path.substr(slash + 1);
        if (name.empty()) {
            continue;
        }
        // Each child starts at a boundary after the one before it; a child
        // of no length ends the list, so that the walk always advances.
        VersionNode child;
        bool matched = false;
        for (std::size_t at = found.children; !matched && ReadNode(tree, at, found.end, child);
             at = Align(child.end)) {
            matched = KeyIs(tree, child, name);
        }
        if (!matched) {
            return false;
        }
        found = child;
    }
    return true;
}

}  // namespace nvk::os::posix
