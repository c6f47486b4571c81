// TableauBody: the untyped, counted body behind every PTableau. The array
// proper is a table of element pointers (`Slots`); the elements live in
// chunks that never move, so inserting, removing and moving only shift
// pointers, and the address of an element stays good across growth. Element
// memory behind `Count` holds no object: the typed layer constructs and
// destroys by hand on the memory the slots name.
#pragma once

#include <cstdint>

class TableauBody {
public:
    // `capacity` 0 means `count`. A non-zero capacity gets one chunk and a
    // slot table that names its elements in order.
    TableauBody(std::uint32_t elementSize, std::uint32_t count, std::uint32_t capacity);
    ~TableauBody() { Clear(); }
    TableauBody(const TableauBody&) = delete;
    TableauBody& operator=(const TableauBody&) = delete;

    // Holders beyond the first are counted in ShareCount; a null body is a
    // handle that was never filled.
    static void AddRef(TableauBody* body) {
        if (body != nullptr) {
            ++body->ShareCount;
        }
    }
    // True when the caller was the last holder and must destroy the body.
    static bool Release(TableauBody* body) {
        if (body == nullptr) {
            return false;
        }
        return body->ShareCount-- == 0;
    }

    // Opens `n` slots at `pos`, growing by `growBy` elements, or by the
    // default increment when it is 0.
    void InsertSlots(std::uint32_t n, std::uint32_t pos, std::uint32_t growBy);
    // Closes `n` slots at `pos`; their memory goes to the end of the table.
    void RemoveSlots(std::uint32_t n, std::uint32_t pos);
    bool MoveSlot(std::uint32_t from, std::uint32_t to);
    // Frees the slot table and every chunk.
    void Clear();

    std::uint32_t ElementSize;
    std::uint32_t Count;
    std::uint32_t Capacity;
    std::uint32_t ShareCount;
    void** Slots;
    void* Chunks;
    // True while the elements stand in slot order in one chunk; callers may
    // read it, nothing here depends on it.
    bool Contiguous;

private:
    // Links a chunk of `n` elements at the head of the list and returns the
    // address of its first element.
    unsigned char* NewChunk(std::uint32_t n);
};
