// Locks of the framework: CSyncObject, the base that CSingleLock takes;
// CCriticalSection, recursive for its owning thread; and CSingleLock, which
// holds one lock for a scope and gives it back at its end.
#pragma once

#include "nvk/afx/object.h"
#include "nvk/nvkafx_export.h"
#include "nvk/os/types.h"

class NVKAFX_EXPORT CSyncObject : public CObject {
    DECLARE_DYNAMIC(CSyncObject)

public:
    // A critical section ignores the time-out and always waits.
    virtual bool Lock(unsigned timeout = nvk::os::INFINITE) = 0;
    virtual bool Unlock() = 0;
};

class NVKAFX_EXPORT CCriticalSection : public CSyncObject {
    DECLARE_DYNAMIC(CCriticalSection)

public:
    CCriticalSection();
    CCriticalSection(const CCriticalSection&) = delete;
    CCriticalSection& operator=(const CCriticalSection&) = delete;
    // Virtual: process-wide singletons of this type are deleted through a
    // base pointer.
    ~CCriticalSection() override;

    bool Lock(unsigned timeout = nvk::os::INFINITE) override;
    bool Unlock() override;

    operator nvk::os::CRITICAL_SECTION*() { return &m_sect; }

    nvk::os::CRITICAL_SECTION m_sect;
};

class NVKAFX_EXPORT CSingleLock {
public:
    explicit CSingleLock(CSyncObject* object, bool initialLock = false);
    CSingleLock(const CSingleLock&) = delete;
    CSingleLock& operator=(const CSingleLock&) = delete;
    ~CSingleLock();

    // Taking a lock this object already holds does nothing more; so does
    // giving back one it does not hold.
    bool Lock(unsigned timeout = nvk::os::INFINITE);
    bool Unlock();
    bool IsLocked() const { return m_bAcquired; }

private:
    CSyncObject* m_pObject;
    bool m_bAcquired = false;
};
