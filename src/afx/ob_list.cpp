#include "nvk/afx/ob_list.h"

CObList::~CObList() {
    RemoveAll();
}

CObList::CNode* CObList::NewNode(CNode* prev, CNode* next, CObject* data) {
    CNode* node = m_Pool.New(CNode{next, prev, data});
    ++m_nCount;
    return node;
}

void CObList::FreeNode(CNode* node) {
    m_Pool.Delete(node);
    if (--m_nCount == 0) {
        RemoveAll();
    }
}

POSITION CObList::AddHead(CObject* newElement) {
    CNode* node = NewNode(nullptr, m_pNodeHead, newElement);
    (m_pNodeHead != nullptr ? m_pNodeHead->pPrev : m_pNodeTail) = node;
    m_pNodeHead = node;
    return AsPosition(node);
}

POSITION CObList::AddTail(CObject* newElement) {
    CNode* node = NewNode(m_pNodeTail, nullptr, newElement);
    (m_pNodeTail != nullptr ? m_pNodeTail->pNext : m_pNodeHead) = node;
    m_pNodeTail = node;
    return AsPosition(node);
}

CObject* CObList::RemoveHead() {
    CObject* data = m_pNodeHead->data;
    RemoveAt(AsPosition(m_pNodeHead));
    return data;
}

CObject* CObList::RemoveTail() {
    CObject* data = m_pNodeTail->data;
    RemoveAt(AsPosition(m_pNodeTail));
    return data;
}

void CObList::RemoveAll() {
    for (CNode* node = m_pNodeHead; node != nullptr;) {
        CNode* next = node->pNext;
        m_Pool.Delete(node);
        node = next;
    }
    m_pNodeHead = m_pNodeTail = nullptr;
    m_nCount = 0;
    m_Pool.FreeBlocks();
}

CObject*& CObList::GetNext(POSITION& position) {
    CNode* node = AsNode(position);
    position = AsPosition(node->pNext);
    return node->data;
}

CObject* CObList::GetNext(POSITION& position) const {
    CNode* node = AsNode(position);
    position = AsPosition(node->pNext);
    return node->data;
}

CObject*& CObList::GetPrev(POSITION& position) {
    CNode* node = AsNode(position);
    position = AsPosition(node->pPrev);
    return node->data;
}

CObject* CObList::GetPrev(POSITION& position) const {
    CNode* node = AsNode(position);
    position = AsPosition(node->pPrev);
    return node->data;
}

void CObList::RemoveAt(POSITION position) {
    CNode* node = AsNode(position);
    (node->pPrev != nullptr ? node->pPrev->pNext : m_pNodeHead) = node->pNext;
    (node->pNext != nullptr ? node->pNext->pPrev : m_pNodeTail) = node->pPrev;
    FreeNode(node);
}

POSITION CObList::InsertBefore(POSITION position, CObject* newElement) {
    if (position == nullptr) {
        return AddHead(newElement);
    }
    CNode* old = AsNode(position);
    CNode* node = NewNode(old->pPrev, old, newElement);
    (old->pPrev != nullptr ? old->pPrev->pNext : m_pNodeHead) = node;
    old->pPrev = node;
    return AsPosition(node);
}

POSITION CObList::InsertAfter(POSITION position, CObject* newElement) {
    if (position == nullptr) {
        return AddTail(newElement);
    }
    CNode* old = AsNode(position);
    CNode* node = NewNode(old, old->pNext, newElement);
    (old->pNext != nullptr ? old->pNext->pPrev : m_pNodeTail) = node;
    old->pNext = node;
    return AsPosition(node);
}

POSITION CObList::Find(CObject* searchValue, POSITION startAfter) const {
    CNode* node = startAfter == nullptr ? m_pNodeHead : AsNode(startAfter)->pNext;
    while (node != nullptr && node->data != searchValue) {
        node = node->pNext;
    }
    return AsPosition(node);
}

POSITION CObList::FindIndex(int index) const {
    if (index < 0 || index >= m_nCount) {
        return nullptr;
    }
    CNode* node = m_pNodeHead;
    while (index-- > 0) {
        node = node->pNext;
    }
    return AsPosition(node);
}
