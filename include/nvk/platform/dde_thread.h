// What DDE keeps for each thread, and the thread's start and end of DDE. A
// thread calls DDEInitialize, makes its servers and clients, runs its
// message loop (the callback runs from there), deletes them, and calls
// DDECleanUp.
#pragma once

#include <cstdint>

#include "nvk/afx/map.h"
#include "nvk/afx/ob_list.h"
#include "nvk/nvkutil_export.h"

class CDDEConnection;

struct sgThreadData {
    int bInitialized = 0;
    std::uint32_t idInst = 0;
    // Accepted by XTYP_CONNECT, waiting for its XTYP_CONNECT_CONFIRM.
    CDDEConnection* pPending = nullptr;
    // String handles by text: each made once and kept until DDECleanUp.
    CMapStringToOb Strings{10};
    // Every CDDEObject of the thread.
    CObList Objects{10};
    // The buffer that default-constructed connections share.
    char* pDefaultBuffer = nullptr;
    int nDefaultBufferSize = 0;
};

// The state of every thread by thread id, one map for the process under the
// singleton key "MapDDEDatas".
using TypeThreadToData = CMap<std::uint32_t, std::uint32_t, sgThreadData*, sgThreadData*>;

// Starts DDE on this thread once; a client-only thread serves nothing and is
// told of nothing.
NVKUTIL_EXPORT void DDEInitialize(bool bClientOnly);
// Ends DDE on this thread and forgets its state.
NVKUTIL_EXPORT void DDECleanUp();

namespace nvk::dde {

// This thread's state, made on first need.
NVKUTIL_EXPORT sgThreadData* ThreadData();

// The thread's last DDEML error, which is then cleared.
NVKUTIL_EXPORT unsigned LastError();
// The text of the error box for a DDEML error.
NVKUTIL_EXPORT CString ErrorText(unsigned error);

}  // namespace nvk::dde
