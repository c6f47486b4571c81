#include "nvk/core/chaine.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "core/copy_bytes.h"
#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"
#include "nvk/context/string_load.h"
#include "nvk/core/block_storage.h"
#include "nvk/core/process_singleton.h"
#include "os/api/memory.h"

using nvk::ReleaseBuffer;

namespace {

// The empty buffer of the process, one for every copy of the frame. An empty
// value may outlive the module that made it (kept in the process dictionary or
// the path service, say), so the buffer can't lie in a module's image, as a
// buffer of each module's own would: it comes from the system and is never
// given back, so it lives as long as the process. Its first count is never
// given up, so the count can't reach 0.
struct EmptyChaineKind {
    using Object = ChaineBuffer;
    static constexpr const char* Key = "EmptyChaine";
    static Object* Make() {
        using namespace nvk::os;
        void* memory = VirtualAlloc(nullptr, sizeof(ChaineBuffer) + 4, MEM_COMMIT | MEM_RESERVE,
                                    PAGE_READWRITE);
        if (memory == nullptr) {
            AfxThrowMemoryException();
        }
        // Committed memory reads as zeros: the text is its terminator.
        return new (memory) ChaineBuffer{1, 1, 1};
    }
    // Never freed: values of any module, loaded or gone, may still hold it. A
    // later holder finds the table empty and makes another.
    static void Destroy(Object*) {}
};

ChaineBuffer* EmptyBuffer() {
    ChaineBuffer* empty = nvk::ProcessSingleton<EmptyChaineKind>::Get();
    nvk::AddReference(empty);
    return empty;
}

bool IsResourceId(const char* text) {
    return reinterpret_cast<std::uintptr_t>(text) <= 0xFFFF;
}

// Holds a second reference on a value's buffer while `text`, read from that
// same buffer, is copied: the value may release or move its buffer first.
class SourceGuard {
public:
    SourceGuard(const void* text, const Chaine& value) {
        const char* begin = value.c_str();
        const auto* p = static_cast<const char*>(text);
        if (p >= begin && p < begin + value.Length() + 1) {
            m_Held = value.Buffer();
            nvk::AddReference(m_Held);
        }
    }
    ~SourceGuard() {
        if (m_Held != nullptr) {
            ReleaseBuffer(m_Held);
        }
    }
    SourceGuard(const SourceGuard&) = delete;
    SourceGuard& operator=(const SourceGuard&) = delete;

private:
    ChaineBuffer* m_Held = nullptr;
};

}  // namespace

// The module's first static objects. The block storage comes up before any
// other static value of the module exists, so its release, registered then,
// runs after every static value's destructor, however the others are ordered.
namespace {
struct BlockStorageFirst {
    BlockStorageFirst() {
        // No exception may leave a static initialiser: the process would end
        // before main. A storage that can't be had now is asked for again by
        // the first allocation, which reports it.
        try {
            BlockStorage();
        } catch (CException* e) {
            e->Delete();
        }
    }
};
__attribute__((init_priority(101))) const BlockStorageFirst g_BlockStorageFirst;
}  // namespace

__attribute__((init_priority(101))) const Chaine SharedEmptyChaine;

Chaine::Chaine() : m_pText(EmptyBuffer()->Text()) {}

Chaine::Chaine(const char* text) {
    if (IsResourceId(text)) {
        // A string id: the text comes from the language layer's string
        // resources, and stays empty where there is none.
        Take(EmptyBuffer());
        if (text != nullptr) {
            auto id = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(text));
            nvk::LoadString(*this, id, nvk::FindStringModule(id));
        }
        return;
    }
    const auto size = static_cast<std::uint32_t>(std::strlen(text) + 1);
    ChaineBuffer* buffer = nvk::NewBuffer(size);
    nvk::CopyBytes(buffer->Text(), text, size);
    Take(buffer);
}

Chaine::Chaine(const void* bytes, int n, bool stripZeros) : Chaine() {
    const auto* p = static_cast<const char*>(bytes);
    if (p == nullptr) {
        return;
    }
    if (stripZeros) {
        while (n > 0 && p[n - 1] == '\0') {
            --n;
        }
        if (n < 1) {
            return;
        }
        n = static_cast<int>(strnlen(p, static_cast<std::size_t>(n)));
    }
    if (n > 0) {
        Assign(p, n);
    }
}

Chaine::Chaine(const CString& text) : Chaine() {
    Assign(text.GetString(), text.GetLength());
}

Chaine& Chaine::Assign(const char* text) {
    if (text == nullptr) {
        Empty();
    } else if (text != m_pText) {
        Assign(text, static_cast<int>(std::strlen(text)));
    }
    return *this;
}

Chaine& Chaine::Assign(const void* bytes, int n) {
    const auto* text = static_cast<const char*>(bytes);
    const SourceGuard source(text, *this);
    const auto length = static_cast<std::uint32_t>(std::max(n, 0));
    Take(nvk::DiscardBuffer(Buffer(), length + 1));
    nvk::CopyBytes(m_pText, text, length);
    m_pText[length] = '\0';
    return *this;
}

Chaine& Chaine::AssignCount(const char* text, int n) {
    if (text == nullptr || n <= 0) {
        Empty();
        return *this;
    }
    const SourceGuard source(text, *this);
    const auto count = static_cast<std::uint32_t>(n);
    Take(nvk::DiscardBuffer(Buffer(), count + 1));
    std::strncpy(m_pText, text, count);
    m_pText[count] = '\0';
    const auto length = static_cast<std::uint32_t>(std::strlen(m_pText));
    if (length == 0) {
        Empty();
        return *this;
    }
    Take(nvk::GrowBuffer(Buffer(), length + 1));
    m_pText[length] = '\0';
    Take(nvk::TrimToFit(Buffer()));
    return *this;
}

void Chaine::Empty() {
    ReleaseBuffer(Buffer());
    Take(EmptyBuffer());
}

char* Chaine::SetLength(int n) {
    const auto length = static_cast<std::uint32_t>(std::max(n, 0));
    Take(nvk::GrowBuffer(Buffer(), length + 1));
    m_pText[length] = '\0';
    return m_pText;
}

void Chaine::Append(const char* text, std::uint32_t size) {
    const SourceGuard source(text, *this);
    const auto length = static_cast<std::uint32_t>(Length());
    Take(nvk::GrowBuffer(Buffer(), length + size));
    std::memcpy(m_pText + length, text, size);
}

Chaine& Chaine::operator+=(const Chaine& other) {
    Append(other.m_pText, other.Buffer()->Size);
    return *this;
}

Chaine& Chaine::operator+=(const char* text) {
    if (text != nullptr) {
        Append(text, static_cast<std::uint32_t>(std::strlen(text) + 1));
    }
    return *this;
}

Chaine& Chaine::operator+=(char c) {
    if (c != '\0') {
        const char text[2] = {c, '\0'};
        Append(text, 2);
    }
    return *this;
}

Chaine Concatenate(const char* left, std::uint32_t leftLength, const char* right,
                   std::uint32_t rightSize) {
    ChaineBuffer* buffer = nvk::NewBuffer(leftLength + rightSize);
    std::memcpy(buffer->Text(), left, leftLength);
    std::memcpy(buffer->Text() + leftLength, right, rightSize);
    return Chaine(buffer);
}

Chaine operator+(const Chaine& left, const Chaine& right) {
    return Concatenate(left.m_pText, static_cast<std::uint32_t>(left.Length()), right.m_pText,
                       right.Buffer()->Size);
}

Chaine operator+(const Chaine& left, const char* right) {
    if (right == nullptr) {
        return left;
    }
    return Concatenate(left.m_pText, static_cast<std::uint32_t>(left.Length()), right,
                       static_cast<std::uint32_t>(std::strlen(right) + 1));
}

Chaine operator+(const char* left, const Chaine& right) {
    if (left == nullptr) {
        return right;
    }
    return Concatenate(left, static_cast<std::uint32_t>(std::strlen(left)), right.m_pText,
                       right.Buffer()->Size);
}

Chaine operator+(const Chaine& left, char right) {
    const char text[2] = {right, '\0'};
    return right == '\0' ? left : left + text;
}

Chaine operator+(char left, const Chaine& right) {
    const char text[2] = {left, '\0'};
    return left == '\0' ? right : text + right;
}

bool Chaine::operator==(const char* text) const {
    if (text == nullptr) {
        return IsEmpty();
    }
    const std::uint32_t size = Buffer()->Size;
    return std::strlen(text) + 1 == size && std::memcmp(m_pText, text, size) == 0;
}

bool Chaine::EqualAndShare(const Chaine& other) {
    if (!(*this == other)) {
        return false;
    }
    Assign(other);
    return true;
}

namespace {

Chaine CopyRange(const char* text, int count) {
    return Chaine(text, count);
}

}  // namespace

Chaine Chaine::Left(int n) const {
    if (n < 1) {
        return Chaine();
    }
    if (n > Length()) {
        return *this;
    }
    return CopyRange(m_pText, n);
}

Chaine Chaine::Mid(int pos) const {
    const int size = Length() + 1;
    if (pos < 0 || pos >= size) {
        return Chaine();
    }
    return CopyRange(m_pText + pos, size - pos - 1);
}

Chaine Chaine::Mid(int pos, int n) const {
    const int size = Length() + 1;
    if (pos < 0 || pos >= size) {
        return Chaine();
    }
    return CopyRange(m_pText + pos, std::min(n, size - pos - 1));
}

Chaine Chaine::Right(int n) const {
    const int length = Length();
    n = std::min(n, length);
    return CopyRange(m_pText + length - std::max(n, 0), n);
}

char Chaine::RemoveAt(int pos) {
    if (pos < 0 || pos >= Length()) {
        return '\0';
    }
    Take(nvk::MakeUnique(Buffer()));
    const char removed = m_pText[pos];
    ChaineBuffer* buffer = Buffer();
    std::memmove(m_pText + pos, m_pText + pos + 1, buffer->Size - pos - 1);
    buffer->Size--;
    return removed;
}

void Chaine::InsertAt(int pos, char c) {
    const int length = Length();
    if (pos < 0) {
        return;
    }
    if (pos < length) {
        SetLength(length + 1);
        std::memmove(m_pText + pos + 1, m_pText + pos, length - pos);
    } else {
        SetLength(pos + 1);
        std::memset(m_pText + length, ' ', pos - length);
    }
    m_pText[pos] = c;
}

void Chaine::PadLeft(int n, char c) {
    const int length = Length();
    if (length >= n) {
        return;
    }
    ChaineBuffer* buffer = nvk::NewBuffer(static_cast<std::uint32_t>(n) + 1);
    std::memset(buffer->Text(), c, n - length);
    std::memcpy(buffer->Text() + n - length, m_pText, length + 1);
    ReleaseBuffer(Buffer());
    Take(buffer);
}

void Chaine::PadRight(int n, char c) {
    const int length = Length();
    if (length >= n) {
        return;
    }
    SetLength(n);
    std::memset(m_pText + length, c, n - length);
}

void Chaine::ReplaceRange(int pos, int count, const char* text) {
    const int length = Length();
    pos = std::clamp(pos, 0, length);
    count = std::clamp(count, 0, length - pos);
    const auto added = static_cast<std::uint32_t>(text == nullptr ? 0 : std::strlen(text));
    ChaineBuffer* buffer = nvk::NewBuffer(static_cast<std::uint32_t>(length + 1 - count) + added);
    std::memcpy(buffer->Text(), m_pText, pos);
    std::memcpy(buffer->Text() + pos, text, added);
    std::memcpy(buffer->Text() + pos + added, m_pText + pos + count, length + 1 - pos - count);
    ReleaseBuffer(Buffer());
    Take(buffer);
}

void Chaine::CopyToPadded(char* dest, int n, char pad) const {
    if (n <= 0) {
        return;
    }
    const int length = Length();
    if (length >= n) {
        std::memcpy(dest, m_pText, n - 1);
        dest[n - 1] = pad;
    } else {
        std::memcpy(dest, m_pText, length);
        std::memset(dest + length, pad, n - length);
    }
}

void Chaine::CopyToFixed(char* dest, int n, char pad) const {
    if (n > 0 && Length() >= n) {
        std::memcpy(dest, m_pText, n);
    } else {
        CopyToPadded(dest, n, pad);
    }
}
