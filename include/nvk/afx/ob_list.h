// CObList: the framework's doubly linked list of CObject pointers. The list
// owns its nodes, never the objects. A POSITION stays valid until its node is
// removed.
#pragma once

#include "nvk/afx/object.h"
#include "nvk/afx/plex.h"
#include "nvk/nvkafx_export.h"

class NVKAFX_EXPORT CObList : public CObject {
public:
    explicit CObList(int nBlockSize = 10) : m_Pool(nBlockSize) {}
    ~CObList() override;
    CObList(const CObList&) = delete;
    CObList& operator=(const CObList&) = delete;

    int GetCount() const { return m_nCount; }
    int GetSize() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }

    // The list must not be empty.
    CObject*& GetHead() { return m_pNodeHead->data; }
    CObject* GetHead() const { return m_pNodeHead->data; }
    CObject*& GetTail() { return m_pNodeTail->data; }
    CObject* GetTail() const { return m_pNodeTail->data; }
    CObject* RemoveHead();
    CObject* RemoveTail();

    POSITION AddHead(CObject* newElement);
    POSITION AddTail(CObject* newElement);
    void RemoveAll();

    POSITION GetHeadPosition() const { return AsPosition(m_pNodeHead); }
    POSITION GetTailPosition() const { return AsPosition(m_pNodeTail); }
    // The element at `position`, which moves to the next (or previous) one,
    // null after the last.
    CObject*& GetNext(POSITION& position);
    CObject* GetNext(POSITION& position) const;
    CObject*& GetPrev(POSITION& position);
    CObject* GetPrev(POSITION& position) const;
    CObject*& GetAt(POSITION position) { return AsNode(position)->data; }
    CObject* GetAt(POSITION position) const { return AsNode(position)->data; }
    void SetAt(POSITION position, CObject* newElement) { AsNode(position)->data = newElement; }
    void RemoveAt(POSITION position);
    POSITION InsertBefore(POSITION position, CObject* newElement);
    POSITION InsertAfter(POSITION position, CObject* newElement);

    // The first node holding `searchValue` after `startAfter` (from the head
    // when null), or null.
    POSITION Find(CObject* searchValue, POSITION startAfter = nullptr) const;
    // The node at a zero-based index, or null when out of range.
    POSITION FindIndex(int index) const;

private:
    struct CNode {
        CNode* pNext;
        CNode* pPrev;
        CObject* data;
    };
    static POSITION AsPosition(CNode* node) { return reinterpret_cast<POSITION>(node); }
    static CNode* AsNode(POSITION position) { return reinterpret_cast<CNode*>(position); }
    CNode* NewNode(CNode* prev, CNode* next, CObject* data);
    void FreeNode(CNode* node);

    CNode* m_pNodeHead = nullptr;
    CNode* m_pNodeTail = nullptr;
    int m_nCount = 0;
    nvk::afx::NodePool<CNode> m_Pool;
};
