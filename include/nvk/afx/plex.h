// What the framework's lists and maps share: the opaque POSITION of their
// walks, and the pool their nodes come from. Nodes are carved from blocks of
// a fixed number of nodes, kept on a free list when removed, and the blocks
// go back to the heap only when the container is emptied, so that a list or
// map that grows and shrinks often doesn't go to the heap for every node.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#include "nvk/afx/allocator.h"

struct __POSITION {};
using POSITION = __POSITION*;

// The position before the first element, for the searches that start "after"
// a position.
inline const POSITION BEFORE_START_POSITION =
    reinterpret_cast<POSITION>(static_cast<std::intptr_t>(-1));

namespace nvk::afx {

template <class Node>
class NodePool {
public:
    explicit NodePool(int blockSize) : m_BlockSize(blockSize > 0 ? blockSize : 1) {}
    ~NodePool() { FreeBlocks(); }
    NodePool(const NodePool&) = delete;
    NodePool& operator=(const NodePool&) = delete;

    // A node built from `args`; throws CMemoryException* when memory is out.
    template <class... Args>
    Node* New(Args&&... args) {
        if (m_Free == nullptr) {
            AddBlock();
        }
        Slot* slot = m_Free;
        m_Free = slot->next;
        try {
            return ::new (static_cast<void*>(slot->bytes)) Node(std::forward<Args>(args)...);
        } catch (...) {
            slot->next = m_Free;
            m_Free = slot;
            throw;
        }
    }

    void Delete(Node* node) noexcept {
        node->~Node();
        Slot* slot = reinterpret_cast<Slot*>(node);
        slot->next = m_Free;
        m_Free = slot;
    }

    // Gives every block back; the caller has deleted every node first.
    void FreeBlocks() noexcept {
        while (m_Blocks != nullptr) {
            Block* next = m_Blocks->next;
            FreeBytes(m_Blocks);
            m_Blocks = next;
        }
        m_Free = nullptr;
    }

private:
    union Slot {
        Slot* next;
        alignas(Node) unsigned char bytes[sizeof(Node)];
    };
    struct Block {
        Block* next;
    };
    // Slots follow the block header at a multiple of the slot's alignment.
    static constexpr std::size_t kHeader =
        (sizeof(Block) + alignof(Slot) - 1) / alignof(Slot) * alignof(Slot);

    void AddBlock() {
        auto* block = static_cast<Block*>(
            AllocateBytes(kHeader + sizeof(Slot) * static_cast<std::size_t>(m_BlockSize)));
        block->next = m_Blocks;
        m_Blocks = block;
        auto* slots = reinterpret_cast<Slot*>(reinterpret_cast<unsigned char*>(block) + kHeader);
        for (int i = m_BlockSize - 1; i >= 0; --i) {
            slots[i].next = m_Free;
            m_Free = &slots[i];
        }
    }

    int m_BlockSize;
    Block* m_Blocks = nullptr;
    Slot* m_Free = nullptr;
};

}  // namespace nvk::afx
