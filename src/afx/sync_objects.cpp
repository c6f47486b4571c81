#include "nvk/afx/sync_objects.h"

#include "os/api/sync.h"

IMPLEMENT_DYNAMIC(CSyncObject, CObject)
IMPLEMENT_DYNAMIC(CCriticalSection, CSyncObject)

CCriticalSection::CCriticalSection() : m_sect{} {
    nvk::os::InitializeCriticalSection(&m_sect);
}

CCriticalSection::~CCriticalSection() {
    nvk::os::DeleteCriticalSection(&m_sect);
}

bool CCriticalSection::Lock(unsigned /*timeout*/) {
    nvk::os::EnterCriticalSection(&m_sect);
    return true;
}

bool CCriticalSection::Unlock() {
    nvk::os::LeaveCriticalSection(&m_sect);
    return true;
}

CSingleLock::CSingleLock(CSyncObject* object, bool initialLock) : m_pObject(object) {
    if (initialLock) {
        Lock();
    }
}

CSingleLock::~CSingleLock() {
    Unlock();
}

bool CSingleLock::Lock(unsigned timeout) {
    if (!m_bAcquired && m_pObject != nullptr) {
        m_bAcquired = m_pObject->Lock(timeout);
    }
    return m_bAcquired;
}

bool CSingleLock::Unlock() {
    if (m_bAcquired) {
        m_bAcquired = !m_pObject->Unlock();
    }
    return !m_bAcquired;
}
