// Chaine: the string of every interface of the library. One word, the address
// of zero-terminated 8-bit text (ANSI code page) inside a counted ChaineBuffer,
// never null. Copies share the buffer; every change copies first if it is
// shared. Positions and counts are signed, and out-of-range positions give
// the empty value, never an error.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <cstring>

#include "nvk/core/chaine_buffer.h"
#include "nvk/os/types.h"

class CArchive;
class CString;

namespace nvk {

// The first start from `from` on at which the n >= 2 bytes of `needle` stand
// in the `length` bytes of `text`, or -1. The C library's vector search finds
// each place of the first byte; the last byte is then looked at before the
// others, which turns most false starts away at once. The scan runs on
// pointers, so that each search costs no conversions of positions.
inline int SearchBytes(const char* text, int length, const char* needle, int n, int from) {
    if (from > length - n) {
        return -1;
    }
    const char* const end = text + (length - n) + 1;  // behind the last possible start
    const char* at = text + from;
    do {
        at = static_cast<const char*>(
            std::memchr(at, needle[0], static_cast<std::size_t>(end - at)));
        if (at == nullptr) {
            return -1;
        }
        if (at[n - 1] == needle[n - 1] &&
            (n == 2 || std::memcmp(at + 1, needle + 1, static_cast<std::size_t>(n - 2)) == 0)) {
            return static_cast<int>(at - text);
        }
    } while (++at != end);
    return -1;
}

}  // namespace nvk
template <class T>
class PTableau;

class Chaine {
public:
    Chaine();
    Chaine(const Chaine& other) : m_pText(other.m_pText) { nvk::AddReference(Buffer()); }
    // Text, or a string resource id when the upper 16 bits are zero (null is
    // id 0, the empty value).
    Chaine(const char* text);  // NOLINT(google-explicit-constructor): used as a text literal
    // `n` bytes from `bytes`. With `stripZeros`, trailing zero bytes go and
    // the text ends at the first zero; otherwise inner zeros stay.
    Chaine(const void* bytes, int n, bool stripZeros = false);
    explicit Chaine(const CString& text);
    // String resource `id` of `module`: empty, then LoadString.
    Chaine(nvk::os::UINT id, nvk::os::HINSTANCE module);
    ~Chaine() { nvk::ReleaseBuffer(Buffer()); }

    Chaine& operator=(const Chaine& other) { return Assign(other); }
    Chaine& operator=(const char* text) { return Assign(text); }

    // Shares the other value's buffer; the own reference goes first, which is
    // safe for any two distinct buffers.
    Chaine& Assign(const Chaine& other) {
        if (other.m_pText != m_pText) {
            nvk::ReleaseBuffer(Buffer());
            nvk::AddReference(other.Buffer());
            m_pText = other.m_pText;
        }
        return *this;
    }
    Chaine& Assign(const char* text);
    Chaine& Assign(const void* bytes, int n);
    // Copies at most n characters as strncpy does, then fits the buffer to
    // the first zero.
    Chaine& AssignCount(const char* text, int n);
    void Empty();
    // Resizes to n characters, writes the terminator and returns the
    // writable text; newly exposed bytes are undefined.
    char* SetLength(int n);

    int Length() const { return static_cast<int>(Buffer()->Size) - 1; }
    bool IsEmpty() const { return Buffer()->Size == 1; }
    operator const char*() const { return m_pText; }  // NOLINT(google-explicit-constructor)
    const char* c_str() const { return m_pText; }
    ChaineBuffer* Buffer() const { return ChaineBuffer::FromText(m_pText); }

    Chaine& operator+=(const Chaine& other);
    Chaine& operator+=(const char* text);
    Chaine& operator+=(char c);

    // Byte equality over Size bytes, the terminator with them. Inline, as
    // std::string's is: most comparisons end at the pointer or the sizes.
    // Equal sizes put both terminators at one place, so the bytes before them
    // decide: the count std::string compares for the same text.
    bool operator==(const Chaine& other) const {
        if (m_pText == other.m_pText) {
            return true;
        }
        const std::uint32_t size = Buffer()->Size;
        return size == other.Buffer()->Size && std::memcmp(m_pText, other.m_pText, size - 1) == 0;
    }
    bool operator==(const char* text) const;
    // Equality that makes equal texts share one block: when equal with
    // different buffers, this value takes the other's.
    bool EqualAndShare(const Chaine& other);

    Chaine Left(int n) const;
    Chaine Right(int n) const;
    Chaine Mid(int pos) const;
    Chaine Mid(int pos, int n) const;

    // Removes and returns the character at pos; 0 at or behind the end.
    char RemoveAt(int pos);
    // Inserts c at pos; behind the end, the gap fills with blanks.
    void InsertAt(int pos, char c);
    void PadLeft(int n, char c);
    void PadRight(int n, char c);
    void ReplaceRange(int pos, int count, const char* text);

    // Writes exactly n bytes into a fixed field. CopyToPadded always ends
    // the field with `pad` when the text fills it; CopyToFixed then copies n
    // characters without pad. Neither adds a terminator of its own.
    void CopyToFixed(char* dest, int n, char pad) const;
    void CopyToPadded(char* dest, int n, char pad) const;

    // Fields separated by `sep` outside `quote`s, empty fields kept; each
    // field unquoted on request. `out` is emptied first. Returns the count.
    int Split(PTableau<Chaine>& out, char sep, char quote = '"', bool noCase = false,
              bool unquote = false) const;
    // At every sep: the empty value gives no field, a sep at the end an empty
    // last field.
    int SplitSimple(PTableau<Chaine>& out, char sep, bool noCase = false) const;
    // At every line feed, each line without its leading and trailing
    // carriage returns.
    int SplitLines(PTableau<Chaine>& out) const;
    // At the first c: left and right of it, true. Without c: left is the whole
    // value, right is left alone, false.
    bool SplitFirst(char c, Chaine& left, Chaine& right, bool noCase = false) const;
    // This value becomes the elements with sep between them; a sep of 0 stays
    // in the text, which is how lists of zero-terminated strings are built.
    Chaine& Join(char sep, const PTableau<Chaine>& array);

    // The number the text starts with once blanks are removed.
    int ToInt() const;
    // Optional blanks, a sign or digit, digits, optional blanks and the end,
    // with at most maxDigits characters from the sign to the last digit.
    bool IsInteger(int maxDigits) const;
    bool IsInt() const { return IsInteger(10); }
    Chaine& FromInt(int n);
    // Two upper-case hexadecimal digits per byte.
    Chaine& FromHex(const void* bytes, int n);
    // Decodes pairs of hexadecimal digits into dest (any case); a character
    // that is not a digit counts as -1. Returns min(Length() / 2, size); a
    // null dest only counts. A dest larger than the text gives is cleared
    // first.
    int ToBytes(void* dest, int size) const;

    // The text from pos, whole, against a pattern: "*" any run (also none),
    // "?" one character, "#" one digit, "[set]" one of a set ("!" first
    // negates, "a-z" a range of signed bytes), "`" the next character as it
    // stands, anything else itself. An empty text matches nothing, not even
    // "*". The no-case form folds through UpperTable.
    bool Like(const char* pattern, int pos = 0) const;
    bool LikeNoCase(const char* pattern, int pos = 0) const;

    // printf formatting into this value; the result is what vsprintf
    // prints. "I64" marks a 64-bit integer argument.
    Chaine& Format(const char* format, ...);
    Chaine& FormatV(const char* format, va_list args);
    // Formats with a string resource as the format; empty while no
    // resources are at hand.
    Chaine& FormatId(nvk::os::UINT id, nvk::os::HINSTANCE module, ...);

    // By the collation of a locale (by default the user's, 0x0400):
    // CompareStringA's answer less 2, so -1, 0 or 1 (and -2 when the system
    // can't compare).
    int CompareLocale(const Chaine& other, nvk::os::DWORD flags = 0,
                      nvk::os::LCID lcid = 0x0400) const;

    // Between the ANSI and the OEM code page, in the value's own buffer.
    Chaine& AnsiToOem();
    Chaine& OemToAnsi();
    // The ANSI text in code page `codePage`, written over the same bytes: the
    // length never changes, and a text that needs more bytes is cut.
    // Characters without a form there become blanks.
    Chaine& ToCodePage(nvk::os::UINT codePage);
    // A string resource; the empty value while no resources are at hand.
    bool LoadString(nvk::os::UINT id);
    bool LoadString(nvk::os::UINT id, nvk::os::HINSTANCE module);

    // An environment variable's value; empty if it is absent.
    Chaine& GetEnv(const char* name);
    // Expands the %NAME% references; unchanged if expansion fails.
    Chaine& ExpandEnv();
    // The name of the user the process runs as; empty if it is unknown.
    Chaine& GetUserName();

    // Length-prefixed text, as the framework counts its archived strings.
    void Serialize(CArchive& archive);

    // Comparisons answer -1, 0 or 1; the same buffer is equal without a
    // look. Texts compare over the smaller Size (so the shorter one's
    // terminator takes part), then by Size.

    // Bytes as unsigned.
    int Compare(const Chaine& other) const;
    // The same result as Compare, byte by byte.
    int CompareBytes(const Chaine& other) const;
    // Through UpperTable, the folded bytes compared as signed: accented
    // capitals sort before ASCII.
    int CompareNoCase(const Chaine& other) const;
    int CompareNoCase(const char* other) const;
    // Through LowerTable, as unsigned.
    int CompareLower(const Chaine& other) const;
    bool EqualsNoCase(const Chaine& other) const;
    // Length 1 and equal to c through UpperTable.
    bool EqualsChar(char c) const;
    bool StartsWithNoCase(const Chaine& prefix) const;
    // The n bytes at pos equal other's first n; the stretch has to end
    // before the terminator. n = 0 is true.
    bool MatchAt(const Chaine& other, int n, bool noCase, int pos) const;

    // Searches give a position or -1; noCase folds both sides through
    // UpperTable. FindChar scans the terminator too, so 0 finds it.
    int FindChar(char c, bool noCase = false, int start = 0) const;
    // An empty text is found at start. The search of a text of two bytes or
    // more with case is inline, as std::string's is, so that a literal's
    // length and bytes are known where it is written.
    int Find(const char* text, bool noCase = false, int start = 0) const {
        const int n = text == nullptr ? 0 : static_cast<int>(std::strlen(text));
        if (noCase || n < 2 || start < 0 || start > Length() - n) {
            return FindBytes(text, n, noCase, start);
        }
        return nvk::SearchBytes(m_pText, Length(), text, n, start);
    }
    // Find of the n bytes at text.
    int FindBytes(const char* text, int n, bool noCase, int start) const;
    // The first character that is one of `set`.
    int FindOneOf(const char* set, int start = 0) const;
    // No character lies outside `set`; the empty value consists of anything.
    bool ConsistsOf(const char* set) const;
    // The first c that stands outside quotes; a doubled quote inside quotes
    // stays inside. A c equal to the quote is found at once.
    int FindCharQuoted(char c, char quote, bool noCase = false, int start = 0) const;
    int CountChar(char c, bool noCase = false) const;
    // n = 0: the text before the first `open` (the whole value if none).
    // n > 0: the text inside the n-th outermost pair of brackets, or empty.
    Chaine GetBracketed(char open, char close, int n, bool noCase = false) const;

    // Replaces every occurrence from start; always 0. A replacement of the
    // same size is written in place, so overlapping matches are seen in the
    // text already changed.
    int Replace(const char* old, const char* with, bool noCase = false, int start = 0);
    // The first occurrence; its position or -1.
    int ReplaceFirst(const char* old, const char* with, bool noCase = false, int start = 0);
    Chaine& Remove(const char* old, bool noCase = false, int start = 0);
    Chaine& ReplaceChar(char c, char with, int start = 0);
    // The first c; its position or -1.
    int ReplaceFirstChar(char c, char with, int start = 0);
    // Every c; with c = 0 the zero bytes inside the text go.
    Chaine& RemoveChar(char c);
    Chaine& KeepOnly(const char* set);
    Chaine& RemoveSet(const char* set);
    // Keeps 0-9, A-Z and a-z.
    Chaine& KeepAlnum();
    // Reverses the text up to its first zero.
    Chaine& Reverse();
    // Surrounds with c, doubling each c inside.
    Chaine& Quote(char c = '"');
    // The reverse of Quote: exactly two c give the empty value, a doubled c
    // becomes one, a single c goes.
    Chaine& Unquote(char c = '"');

    // Every byte through UpperTable or LowerTable.
    Chaine& Upper();
    Chaine& Lower();
    // Remove every leading (trailing) c, or character of `set`; what remains
    // goes into a fresh buffer that fits.
    Chaine& TrimLeft(char c = ' ');
    Chaine& TrimRight(char c = ' ');
    Chaine& TrimLeft(const char* set);
    Chaine& TrimRight(const char* set);

    // File names and paths. Paths have Windows syntax: "\" and "/" separate
    // when read, ":" ends a drive, and "\" is the one written. A path that is
    // a root ("c:\", "c:", "\\srv\share\") has no name or folder of its own.
    bool IsAbsolutePath() const;
    bool IsRootPath() const;
    // A network root gets a "\" at its end. A path with a single leading
    // separator gives the root "\" and, deliberately, the separator alone as
    // its rest; a relative path gives an empty root and rest.
    void SplitRoot(Chaine& root, Chaine& rest) const;
    Chaine GetRoot() const;
    Chaine GetFileName() const;
    Chaine GetExtension() const;
    // Without the last component and its separator, except that a root
    // keeps its separator.
    Chaine GetFolder() const;
    Chaine GetFolderSlash() const;
    Chaine& RemoveTrailingSlash();
    Chaine& AppendPath(const Chaine& tail);
    // An absolute tail replaces the value, one that begins with "\" goes on
    // the value's root, any other is appended; then NormalizePath.
    Chaine& CombinePath(const Chaine& tail);
    Chaine& MakeAbsolute();
    // Resolves "." and ".."; a relative path keeps its leading "..".
    Chaine& NormalizePath();
    // Removes what a file name can't hold; with `checkDevices` an empty name
    // becomes "_" and a device name ("con", "COM3") gets "_" appended.
    Chaine& MakeValidFileName(bool checkDevices);
    bool IsValidFileName() const;
    bool FileExists() const;
    bool IsFolder() const;
    bool FolderPathExists() const;
    // The share behind the path: the root of a network path, or the
    // connection of a drive; empty for a local one.
    Chaine GetNetworkPath() const;
    Chaine GetServerName() const;
    // The whole file, from its start; false (and an empty value) when it
    // can't all be read.
    bool ReadFromHandle(nvk::os::HANDLE handle);
    // Writes the value as the whole file.
    bool WriteToHandle(nvk::os::HANDLE handle) const;
    bool WriteToFile(const char* path) const;

    // Well-known places, each filling the value. The executable's path and
    // folder and the temporary folder are read once and kept.
    Chaine& GetCurrentFolder();
    Chaine& GetModulePath(nvk::os::HMODULE module);
    Chaine& GetExePath();
    Chaine& GetExeFolder();
    Chaine& GetTempFolder();
    // Creates an empty file of a new name in the temporary folder.
    Chaine& GetTempName(const char* prefix);
    Chaine& GetAppDataFolder();
    Chaine& GetDocumentsFolder();
    Chaine& GetSpecialFolder(int csidl);

private:
    explicit Chaine(ChaineBuffer* buffer) : m_pText(buffer->Text()) {}
    void Take(ChaineBuffer* buffer) { m_pText = buffer->Text(); }
    void Append(const char* text, std::uint32_t size);
    // Keeps the `count` characters at `pos` in a fresh buffer that fits.
    void KeepRange(int pos, int count);
    template <class Strip>
    Chaine& TrimLeftWhile(Strip strip);
    template <class Strip>
    Chaine& TrimRightWhile(Strip strip);
    // Drops every character for which drop(c) holds, in place.
    template <class Drop>
    Chaine& RemoveWhere(Drop drop);

    friend Chaine operator+(const Chaine& left, const Chaine& right);
    friend Chaine operator+(const Chaine& left, const char* right);
    friend Chaine operator+(const char* left, const Chaine& right);
    friend Chaine operator+(const Chaine& left, char right);
    friend Chaine operator+(char left, const Chaine& right);
    friend Chaine Concatenate(const char* left, std::uint32_t leftLength, const char* right,
                              std::uint32_t rightSize);

    char* m_pText;
};
static_assert(sizeof(Chaine) == sizeof(char*));

Chaine operator+(const Chaine& left, const Chaine& right);
Chaine operator+(const Chaine& left, const char* right);
Chaine operator+(const char* left, const Chaine& right);
Chaine operator+(const Chaine& left, char right);
Chaine operator+(char left, const Chaine& right);

// Joins two paths with one separator between them; see AppendPath.
Chaine PathJoin(const Chaine& head, const Chaine& tail);
// A copy of `head` on which CombinePath(tail) ran.
Chaine operator/(const Chaine& head, const Chaine& tail);
// Creates a folder with its missing parents: 1 when it exists afterwards.
int MakeDirectoryPath(const char* path, nvk::os::LPSECURITY_ATTRIBUTES security);

// The archive form: the framework's string length prefix, then the characters
// without a terminator.
CArchive& operator<<(CArchive& archive, const Chaine& value);
CArchive& operator>>(CArchive& archive, Chaine& value);

inline bool operator!=(const Chaine& left, const Chaine& right) {
    return !(left == right);
}
inline bool operator!=(const Chaine& left, const char* right) {
    return !(left == right);
}

// The module's empty value, holding one reference on the empty buffer from
// start-up to the end.
extern const Chaine SharedEmptyChaine;

// The default line end of buffered text files, and the wrapper of the
// applications' RTF text.
extern const Chaine ChaineCrLf;
extern const Chaine ChaineRtfHead;
extern const Chaine ChaineRtfEnd;
extern const Chaine ChaineRtfPar;
