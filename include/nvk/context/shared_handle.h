// A counted handle on one object: copies share a Shared record, and the
// holder that brings its count to 0 deletes the object, then the record.
#pragma once

#include <cstdint>

template <class T>
struct Shared {
    std::int32_t RefCount;
    T* Object;
};

template <class T, class S = Shared<T>>
class SharedHandle {
public:
    SharedHandle() = default;
    // Takes the object over, with a count of 1.
    explicit SharedHandle(T* object) : m_pShared(new S{1, object}) {}
    SharedHandle(const SharedHandle& other) : m_pShared(other.m_pShared) { AddReference(); }
    SharedHandle& operator=(const SharedHandle& other) {
        if (other.m_pShared != m_pShared) {
            S* old = m_pShared;
            m_pShared = other.m_pShared;
            AddReference();
            Release(old);
        }
        return *this;
    }
    ~SharedHandle() { Release(m_pShared); }

    T* Get() const { return m_pShared != nullptr ? m_pShared->Object : nullptr; }
    T* operator->() const { return Get(); }
    T& operator*() const { return *Get(); }
    explicit operator bool() const { return m_pShared != nullptr; }
    // The holders of the object; 0 for a null handle.
    std::int32_t RefCount() const {
        return m_pShared != nullptr ? __atomic_load_n(&m_pShared->RefCount, __ATOMIC_SEQ_CST) : 0;
    }

private:
    void AddReference() {
        if (m_pShared != nullptr) {
            __atomic_add_fetch(&m_pShared->RefCount, 1, __ATOMIC_SEQ_CST);
        }
    }
    static void Release(S* shared) {
        if (shared != nullptr && __atomic_sub_fetch(&shared->RefCount, 1, __ATOMIC_SEQ_CST) == 0) {
            delete shared->Object;
            delete shared;
        }
    }

    S* m_pShared = nullptr;
};
