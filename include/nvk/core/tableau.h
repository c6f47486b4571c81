// PTableau<T>: the array of every interface. A value of one word, the address
// of a counted, copy-on-write TableauBody (null for an array that was never
// filled). Elements stay at the address they were built at: growth and middle
// insertion move only the body's pointers.
//
// Three layers, none virtual: MiniConAArray<T> holds the word and knows how to
// build, copy and destroy a T; TableauEx<> adds the operations of the table;
// PTableau<T> is what callers name. Bodies are not shared safely between
// threads: their counts are plain integers.
//
// Positions are signed. Out-of-range positions of the changing operations are
// cut or ignored, as each operation says; element access is not checked.
#pragma once

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include "nvk/core/tableau_body.h"

template <class T>
class MiniConAArray {
public:
    using Element = T;

    constexpr MiniConAArray() noexcept = default;
    MiniConAArray(const MiniConAArray& other) noexcept : m_pBody(other.m_pBody) {
        TableauBody::AddRef(m_pBody);
    }
    MiniConAArray(MiniConAArray&& other) noexcept
        : m_pBody(std::exchange(other.m_pBody, nullptr)) {}
    ~MiniConAArray() { ReleaseBody(); }

    MiniConAArray& operator=(const MiniConAArray& other) {
        if (m_pBody != other.m_pBody) {
            TableauBody* shared = other.m_pBody;
            TableauBody::AddRef(shared);
            ReleaseBody();
            m_pBody = shared;
        }
        return *this;
    }
    MiniConAArray& operator=(MiniConAArray&& other) noexcept {
        if (this != &other) {
            ReleaseBody();
            m_pBody = std::exchange(other.m_pBody, nullptr);
        }
        return *this;
    }

    // Gives this value a body of its own when others share it: a copy of
    // every element, in index order. If a copy throws, the shared body stays.
    void MakeUnique() {
        if (m_pBody == nullptr || m_pBody->ShareCount == 0) {
            return;
        }
        auto* fresh = new TableauBody(sizeof(T), m_pBody->Count, 0);
        try {
            Build(fresh, 0, fresh->Count,
                  [old = m_pBody](std::uint32_t i, void* at) { new (at) T(*At(old, i)); });
        } catch (...) {
            delete fresh;
            throw;
        }
        ReleaseBody();
        m_pBody = fresh;
    }

    // The body, for callers that look at its layout (Capacity, Contiguous).
    const TableauBody* Body() const { return m_pBody; }

protected:
    static T* At(const TableauBody* body, std::uint32_t i) {
        return std::launder(static_cast<T*>(body->Slots[i]));
    }

    // Makes `n` slots at `pos` in a body of this value's own, or a new body of
    // `n` slots, and builds element `pos + i` with `make(i, address)`. If a
    // build throws, the elements built so far go and the slots close again.
    template <class Make>
    void Open(std::uint32_t n, std::uint32_t pos, Make make) {
        if (m_pBody == nullptr) {
            m_pBody = new TableauBody(sizeof(T), n, 0);
            pos = 0;
        } else {
            MakeUnique();
            m_pBody->InsertSlots(n, pos, 0);
        }
        try {
            Build(m_pBody, pos, n, make);
        } catch (...) {
            m_pBody->RemoveSlots(n, pos);
            DropIfEmpty();
            throw;
        }
    }

    // Destroys and closes `n` elements at `pos` of an unshared body.
    void Close(std::uint32_t n, std::uint32_t pos) {
        for (std::uint32_t i = 0; i < n; ++i) {
            At(m_pBody, pos + i)->~T();
        }
        m_pBody->RemoveSlots(n, pos);
        DropIfEmpty();
    }

    TableauBody* m_pBody = nullptr;

private:
    template <class Make>
    static void Build(TableauBody* body, std::uint32_t pos, std::uint32_t n, Make make) {
        std::uint32_t built = 0;
        try {
            for (; built < n; ++built) {
                make(built, body->Slots[pos + built]);
            }
        } catch (...) {
            while (built > 0) {
                At(body, pos + --built)->~T();
            }
            throw;
        }
    }

    // A body whose last element went is freed, and the handle is null again.
    void DropIfEmpty() {
        if (m_pBody->Count == 0) {
            delete m_pBody;
            m_pBody = nullptr;
        }
    }

    void ReleaseBody() noexcept {
        if (TableauBody::Release(m_pBody)) {
            for (std::uint32_t i = 0; i < m_pBody->Count; ++i) {
                At(m_pBody, i)->~T();
            }
            delete m_pBody;
        }
        m_pBody = nullptr;
    }
};

template <class Base>
class TableauEx : public Base {
public:
    using T = typename Base::Element;
    using Base::Base;

    int Size() const {
        return this->m_pBody == nullptr ? 0 : static_cast<int>(this->m_pBody->Count);
    }
    bool IsEmpty() const { return Size() == 0; }

    const T& operator[](int i) const {
        return *Base::At(this->m_pBody, static_cast<std::uint32_t>(i));
    }
    T& operator[](int i) {
        this->MakeUnique();
        return *Base::At(this->m_pBody, static_cast<std::uint32_t>(i));
    }

    // Builds default elements at the end, or removes from the tail.
    void SetSize(int n) {
        n = std::max(n, 0);
        const int size = Size();
        if (n > size) {
            Insert(n - size, size);
        } else if (n < size) {
            Remove(size - n, n);
        }
    }

    T& Add() {
        SetSize(Size() + 1);
        return (*this)[Size() - 1];
    }
    // Appends a copy and returns its index. `element` may be one of ours:
    // elements don't move while slots open.
    int Add(const T& element) {
        const int index = Size();
        InsertAt(index, element, 1);
        return index;
    }

    // Opens `n` default elements at `pos`; a `pos` behind the end appends.
    void Insert(int n, int pos) {
        if (n <= 0 || pos < 0) {
            return;
        }
        this->Open(Unsigned(n), Unsigned(std::min(pos, Size())),
                   [](std::uint32_t, void* at) { new (at) T(); });
    }
    // Opens `n` elements at `pos`, the i-th a copy of *source[i % sourceCount],
    // so a short source repeats. Without a source nothing is inserted.
    void Insert(int n, int pos, const T* const* source, int sourceCount) {
        if (n <= 0 || pos < 0 || source == nullptr || sourceCount <= 0) {
            return;
        }
        this->Open(Unsigned(n), Unsigned(std::min(pos, Size())),
                   [source, sourceCount](std::uint32_t i, void* at) {
                       new (at) T(*source[i % static_cast<std::uint32_t>(sourceCount)]);
                   });
    }
    // Opens `n` copies of `element` at `index`. An index behind the end opens
    // the gap as well, with copies.
    void InsertAt(int index, const T& element, int n = 1) {
        if (index < 0 || n <= 0) {
            return;
        }
        const int size = Size();
        if (index > size) {
            n += index - size;
            index = size;
        }
        const T* source = &element;
        Insert(n, index, &source, 1);
    }

    // Destroys and closes `n` elements at `pos`, cut to the end; removing the
    // last element frees the body and leaves a null handle.
    void Remove(int n, int pos) {
        const int size = Size();
        if (n <= 0 || pos < 0 || pos >= size) {
            return;
        }
        this->MakeUnique();
        this->Close(Unsigned(std::min(n, size - pos)), Unsigned(pos));
    }
    void RemoveAll() { Remove(Size(), 0); }

    // Moves one element; `to` is cut to the last index. False only for a
    // `from` out of range. A negative `to` is taken as 0, where cutting only
    // at the end would move slots before the start of the table.
    bool Move(int from, int to) {
        const int size = Size();
        if (from < 0 || from >= size) {
            return false;
        }
        to = std::clamp(to, 0, size - 1);
        if (from == to) {
            return true;
        }
        this->MakeUnique();
        return this->m_pBody->MoveSlot(Unsigned(from), Unsigned(to));
    }

private:
    static std::uint32_t Unsigned(int n) { return static_cast<std::uint32_t>(n); }
};

template <class T>
class PTableau : public TableauEx<MiniConAArray<T>> {
public:
    using TableauEx<MiniConAArray<T>>::TableauEx;
};
