#include "nvk/core/tableau_body.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

// A chunk starts with the link to the next one, padded so that the elements
// behind it keep the alignment that `new` gives.
union ChunkHeader {
    void* Next;
    std::max_align_t Align;
};

// The default growth: small arrays by 4, then an eighth, capped at 1,024.
std::uint32_t DefaultIncrement(std::uint32_t count) {
    if (count < 32) {
        return 4;
    }
    if (count <= 8192) {
        return count / 8;
    }
    return 1024;
}

void MoveEntries(void** to, void** from, std::uint32_t n) {
    std::memmove(to, from, std::size_t{n} * sizeof(void*));
}

}  // namespace

TableauBody::TableauBody(std::uint32_t elementSize, std::uint32_t count, std::uint32_t capacity)
    : ElementSize(elementSize),
      Count(count),
      Capacity(capacity == 0 ? count : capacity),
      ShareCount(0),
      Slots(nullptr),
      Chunks(nullptr),
      Contiguous(true) {
    if (Capacity == 0) {
        return;
    }
    Slots = new void*[Capacity];
    try {
        unsigned char* element = NewChunk(Capacity);
        for (std::uint32_t i = 0; i < Capacity; ++i, element += ElementSize) {
            Slots[i] = element;
        }
    } catch (...) {
        delete[] Slots;
        throw;
    }
}

unsigned char* TableauBody::NewChunk(std::uint32_t n) {
    auto* block = new unsigned char[sizeof(ChunkHeader) + std::size_t{n} * ElementSize];
    reinterpret_cast<ChunkHeader*>(block)->Next = Chunks;
    Chunks = block;
    return block + sizeof(ChunkHeader);
}

void TableauBody::InsertSlots(std::uint32_t n, std::uint32_t pos, std::uint32_t growBy) {
    const std::uint32_t newCount = Count + n;
    if (Capacity >= newCount && growBy == 0) {
        if (pos < Count) {
            // The first n spare slots, just behind Count, come in at pos.
            if (n == 1) {
                void* lifted = Slots[Count];
                MoveEntries(Slots + pos + 1, Slots + pos, Count - pos);
                Slots[pos] = lifted;
            } else {
                void** lifted = new void*[n];
                std::copy_n(Slots + Count, n, lifted);
                MoveEntries(Slots + pos + n, Slots + pos, Count - pos);
                std::copy_n(lifted, n, Slots + pos);
                delete[] lifted;
            }
            Contiguous = false;
        }
        Count = newCount;
        return;
    }

    if (Chunks != nullptr) {
        Contiguous = false;
    }
    std::uint32_t increment = growBy != 0 ? growBy : DefaultIncrement(Count);
    if (Capacity + increment < newCount) {
        increment = newCount - Capacity;
    }
    void** slots = new void*[std::size_t{Capacity} + increment];
    unsigned char* element;
    try {
        element = NewChunk(increment);
    } catch (...) {
        delete[] slots;
        throw;
    }
    auto takeNew = [&] {
        void* address = element;
        element += ElementSize;
        return address;
    };

    std::uint32_t filled = 0;
    auto copy = [&](void** from, std::uint32_t n) {
        std::copy_n(from, n, slots + filled);
        filled += n;
    };
    if (Slots != nullptr && pos >= Count) {
        copy(Slots, Capacity);
    } else if (Slots != nullptr) {
        // The old spare slots open the gap at pos, the new chunk tops it up,
        // and the elements from pos on follow. More spare slots than the gap
        // needs (only with an explicit growBy) stay spare behind them.
        const std::uint32_t spare = Capacity - Count;
        const std::uint32_t reused = std::min(spare, n);
        copy(Slots, pos);
        copy(Slots + Count, reused);
        for (std::uint32_t i = reused; i < n; ++i) {
            slots[filled++] = takeNew();
        }
        copy(Slots + pos, Count - pos);
        copy(Slots + Count + reused, spare - reused);
    }
    for (; filled < Capacity + increment; ++filled) {
        slots[filled] = takeNew();
    }
    delete[] Slots;
    Slots = slots;
    Capacity += increment;
    Count = newCount;
}

void TableauBody::RemoveSlots(std::uint32_t n, std::uint32_t pos) {
    if (n == Count) {
        Clear();
        return;
    }
    if (n + pos != Count) {
        // The removed slots rotate to the very end of the table, behind the
        // spare ones.
        if (n == 1) {
            void* lifted = Slots[pos];
            MoveEntries(Slots + pos, Slots + pos + 1, Capacity - pos - 1);
            Slots[Capacity - 1] = lifted;
        } else {
            void** lifted = new void*[n];
            std::copy_n(Slots + pos, n, lifted);
            MoveEntries(Slots + pos, Slots + pos + n, Capacity - pos - n);
            std::copy_n(lifted, n, Slots + Capacity - n);
            delete[] lifted;
        }
        Contiguous = false;
    }
    Count -= n;
}

bool TableauBody::MoveSlot(std::uint32_t from, std::uint32_t to) {
    void* lifted = Slots[from];
    if (from < to) {
        MoveEntries(Slots + from, Slots + from + 1, to - from);
    } else {
        MoveEntries(Slots + to + 1, Slots + to, from - to);
    }
    Slots[to] = lifted;
    Contiguous = false;
    return true;
}

void TableauBody::Clear() {
    delete[] Slots;
    Slots = nullptr;
    while (Chunks != nullptr) {
        auto* block = static_cast<unsigned char*>(Chunks);
        Chunks = reinterpret_cast<ChunkHeader*>(block)->Next;
        delete[] block;
    }
    Count = 0;
    Capacity = 0;
    Contiguous = true;
}
