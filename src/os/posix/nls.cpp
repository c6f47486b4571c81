#include "os/api/nls.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "os/posix/code_page_tables.h"
#include "os/posix/handle.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

constexpr UINT kAnsiCodePage = 1252;
constexpr UINT kOemCodePage = 850;
constexpr UChar kReplacement = 0xFFFD;

UINT ResolveCodePage(UINT codePage) {
    switch (codePage) {
        case CP_ACP:
            return kAnsiCodePage;
        case CP_OEMCP:
            return kOemCodePage;
        default:
            return codePage;
    }
}

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

// Converters keep state between calls, so each thread has its own, opened on
// first use. Null for a code page the platform doesn't know.
UConverter* ConverterFor(UINT codePage) {
    thread_local std::map<UINT, Converter> converters;
    auto found = converters.find(codePage);
    if (found == converters.end()) {
        Converter converter;
        if (codePage == CP_UTF8 || codePage == CP_UTF7) {
            UErrorCode status = U_ZERO_ERROR;
            converter.reset(ucnv_open(codePage == CP_UTF8 ? "UTF-8" : "UTF-7", &status));
        } else if (codePage == 28591) {
            // Latin-1 has no name by its Windows number among the converters.
            UErrorCode status = U_ZERO_ERROR;
            converter.reset(ucnv_open("ISO-8859-1", &status));
        } else {
            for (const char* pattern : {"windows-%u", "ibm-%u", "cp%u"}) {
                char name[32];
                std::snprintf(name, sizeof name, pattern, codePage);
                UErrorCode status = U_ZERO_ERROR;
                converter.reset(ucnv_open(name, &status));
                if (U_SUCCESS(status) && converter) {
                    break;
                }
                converter.reset();
            }
        }
        found = converters.emplace(codePage, std::move(converter)).first;
    }
    if (found->second) {
        ucnv_reset(found->second.get());
    }
    return found->second.get();
}

// What the callbacks need to know and report for one call.
struct CallbackContext {
    bool strict = false;                  // invalid input fails the call
    const char* fallback = "?";           // the default character, for wide to multi-byte
    const UChar* start = nullptr;         // of the source, for wide to multi-byte
    std::size_t firstDefault = SIZE_MAX;  // where the first default character went
    bool failed = false;
};

void ToUnicodeCallback(const void* context, UConverterToUnicodeArgs* args, const char*, int32_t,
                       UConverterCallbackReason reason, UErrorCode* status) {
    if (reason > UCNV_IRREGULAR) {
        return;
    }
    auto* state = static_cast<CallbackContext*>(const_cast<void*>(context));
    if (state->strict) {
        state->failed = true;
        return;  // the error stands and stops the conversion
    }
    *status = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(args, &kReplacement, 1, 0, status);
}

void FromUnicodeCallback(const void* context, UConverterFromUnicodeArgs* args, const UChar*,
                         int32_t length, UChar32, UConverterCallbackReason reason,
                         UErrorCode* status) {
    if (reason > UCNV_IRREGULAR) {
        return;
    }
    auto* state = static_cast<CallbackContext*>(const_cast<void*>(context));
    if (state->strict) {
        state->failed = true;
        return;  // the error stands and stops the conversion
    }
    *status = U_ZERO_ERROR;
    if (state->fallback == nullptr) {  // UTF-8: a lone surrogate
        static constexpr char kReplacementUtf8[] = "\xEF\xBF\xBD";
        ucnv_cbFromUWriteBytes(args, kReplacementUtf8, 3, 0, status);
        return;
    }
    const auto at = static_cast<std::size_t>(args->source - state->start - length);
    state->firstDefault = std::min(state->firstDefault, at);
    ucnv_cbFromUWriteBytes(args, state->fallback, 1, 0, status);
}

// The result of a conversion with, for each output unit, the source unit it
// came from: a short destination is cut between whole characters.
template <class Unit>
struct Converted {
    std::vector<Unit> units;
    std::vector<int32_t> offsets;
};

// Copies the whole characters that fit in `size` units, or reports the size
// needed when `size` is 0. `read` tells how many source units went out.
template <class Unit>
int Deliver(const Converted<Unit>& result, Unit* dest, int size, std::size_t& read) {
    const auto total = static_cast<int>(result.units.size());
    read = SIZE_MAX;
    if (size == 0) {
        return total;
    }
    int count = std::min(total, size);
    if (count < total) {
        while (count > 0 && result.offsets[count] == result.offsets[count - 1]) {
            --count;
        }
    }
    std::copy_n(result.units.begin(), count, dest);
    if (count < total) {
        read = static_cast<std::size_t>(result.offsets[static_cast<std::size_t>(count)]);
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return total;
}

bool ValidSizes(const void* source, int sourceSize, const void* dest, int destSize) {
    return source != nullptr && sourceSize != 0 && destSize >= 0 &&
           (destSize == 0 || dest != nullptr);
}

// The flags each kind of code page takes; others fail with
// ERROR_INVALID_FLAGS, as do MB_PRECOMPOSED and MB_COMPOSITE together.
bool ValidToWideFlags(UINT codePage, DWORD flags) {
    if (codePage == CP_UTF7) {
        return flags == 0;
    }
    if (codePage == CP_UTF8) {
        return (flags & ~MB_ERR_INVALID_CHARS) == 0;
    }
    return (flags & ~(MB_PRECOMPOSED | MB_COMPOSITE | MB_USEGLYPHCHARS | MB_ERR_INVALID_CHARS)) ==
               0 &&
           (flags & (MB_PRECOMPOSED | MB_COMPOSITE)) != (MB_PRECOMPOSED | MB_COMPOSITE);
}

bool ValidToMultiByteFlags(UINT codePage, DWORD flags) {
    if (codePage == CP_UTF7) {
        return flags == 0;
    }
    if (codePage == CP_UTF8) {
        return (flags & ~WC_ERR_INVALID_CHARS) == 0;
    }
    return (flags & ~(WC_COMPOSITECHECK | WC_DISCARDNS | WC_SEPCHARS | WC_DEFAULTCHAR |
                      WC_NO_BEST_FIT_CHARS)) == 0;
}

// A negative size, whatever its value, takes the text up to and with its
// terminator.
template <class Unit>
std::size_t SourceLength(const Unit* source, int size) {
    return size < 0 ? std::char_traits<Unit>::length(source) + 1 : static_cast<std::size_t>(size);
}

// Single-byte code pages go through their own tables, both ways.
int SingleByteToWide(const posix::SingleByteCodePage& table, LPCSTR source, std::size_t length,
                     LPWSTR dest, int destSize) {
    const auto total = static_cast<int>(length);
    if (destSize == 0) {
        return total;
    }
    const std::size_t count = std::min(length, static_cast<std::size_t>(destSize));
    std::size_t i = 0;
    if constexpr (std::endian::native == std::endian::little) {
        // Sixteen bytes at a time: all widened as ASCII, then the bytes with
        // their high bit set looked up in the table.
        constexpr std::size_t kRun = 16;
        for (; count - i >= kRun; i += kRun) {
            unsigned char run[kRun];
            std::memcpy(run, source + i, kRun);
            for (std::size_t k = 0; k < kRun; ++k) {
                dest[i + k] = run[k];
            }
            std::uint64_t words[2];
            std::memcpy(words, run, kRun);
            for (std::size_t half = 0; half < 2; ++half) {
                for (std::uint64_t high = words[half] & 0x8080808080808080ULL; high != 0;
                     high &= high - 1) {
                    const std::size_t k =
                        half * 8 + static_cast<std::size_t>(std::countr_zero(high)) / 8;
                    dest[i + k] = table.Wide(run[k]);
                }
            }
        }
    }
    for (; i < count; ++i) {
        dest[i] = table.Wide(static_cast<unsigned char>(source[i]));
    }
    if (count < length) {
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return total;
}

// Only the characters actually replaced, not those a short destination
// stopped before, set *usedDefaultChar.
int SingleByteFromWide(const posix::SingleByteCodePage& table, DWORD flags, LPCWSTR source,
                       std::size_t length, LPSTR dest, int destSize, LPCSTR defaultChar,
                       BOOL* usedDefaultChar) {
    const bool bestFit = (flags & WC_NO_BEST_FIT_CHARS) == 0;
    const char fallback = defaultChar != nullptr ? *defaultChar : '?';
    const std::size_t room = destSize == 0 ? length : static_cast<std::size_t>(destSize);
    const std::size_t count = std::min(length, room);
    bool used = false;
    for (std::size_t i = 0; i < count; ++i) {
        const int byte = table.Byte(source[i], bestFit);
        used |= byte == posix::SingleByteCodePage::kNone;
        if (destSize != 0) {
            dest[i] = byte == posix::SingleByteCodePage::kNone ? fallback : static_cast<char>(byte);
        }
    }
    if (usedDefaultChar != nullptr) {
        *usedDefaultChar = used ? TRUE : FALSE;
    }
    if (count < length) {
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return static_cast<int>(length);
}

// A 256-entry table from one single-byte code page to another, built once.
using ByteTable = std::array<char, 256>;

ByteTable MakeByteTable(UINT from, UINT to) {
    ByteTable table{};
    for (int c = 0; c < 256; ++c) {
        const char byte = static_cast<char>(c);
        WCHAR wide = 0;
        char out = '?';
        if (c == 0 || MultiByteToWideChar(from, 0, &byte, 1, &wide, 1) == 1) {
            WideCharToMultiByte(to, 0, &wide, 1, &out, 1, nullptr, nullptr);
        }
        table[static_cast<std::size_t>(c)] = out;
    }
    return table;
}

BOOL MapBytes(LPCSTR source, LPSTR dest, const ByteTable& table) {
    if (source == nullptr || dest == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::size_t i = 0;
    for (; source[i] != '\0'; ++i) {
        dest[i] = table[static_cast<unsigned char>(source[i])];
    }
    dest[i] = '\0';
    return TRUE;
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize, LPWSTR dest,
                        int destSize) {
    const UINT resolved = ResolveCodePage(codePage);
    if (!ValidSizes(source, sourceSize, dest, destSize)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (!ValidToWideFlags(resolved, flags)) {
        SetErrorCode(ERROR_INVALID_FLAGS);
        return 0;
    }
    const std::size_t length = SourceLength(source, sourceSize);
    if (const auto* table = posix::SingleByteCodePage::For(resolved)) {
        return SingleByteToWide(*table, source, length, dest, destSize);
    }
    UConverter* converter = ConverterFor(resolved);
    if (converter == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    CallbackContext context;
    context.strict = (flags & MB_ERR_INVALID_CHARS) != 0;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter, ToUnicodeCallback, &context, nullptr, nullptr, &status);

    // At most one UTF-16 unit per byte, whatever the code page.
    Converted<WCHAR> result;
    result.units.resize(length);
    result.offsets.resize(length);
    UChar* target = result.units.data();
    const char* from = source;
    ucnv_toUnicode(converter, &target, target + length, &from, source + length,
                   result.offsets.data(), TRUE, &status);
    if (context.failed || U_FAILURE(status)) {
        SetErrorCode(context.failed ? ERROR_NO_UNICODE_TRANSLATION : ERROR_INVALID_PARAMETER);
        return 0;
    }
    result.units.resize(static_cast<std::size_t>(target - result.units.data()));
    std::size_t read = 0;
    return Deliver(result, dest, destSize, read);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize, LPSTR dest,
                        int destSize, LPCSTR defaultChar, BOOL* usedDefaultChar) {
    const UINT resolved = ResolveCodePage(codePage);
    const bool utf = resolved == CP_UTF8 || resolved == CP_UTF7;
    if (!ValidSizes(source, sourceSize, dest, destSize) ||
        (utf && (defaultChar != nullptr || usedDefaultChar != nullptr))) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (!ValidToMultiByteFlags(resolved, flags)) {
        SetErrorCode(ERROR_INVALID_FLAGS);
        return 0;
    }
    const std::size_t length = SourceLength(source, sourceSize);
    if (const auto* table = posix::SingleByteCodePage::For(resolved)) {
        return SingleByteFromWide(*table, flags, source, length, dest, destSize, defaultChar,
                                  usedDefaultChar);
    }
    UConverter* converter = ConverterFor(resolved);
    if (converter == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    CallbackContext context;
    context.start = source;
    context.strict = (flags & WC_ERR_INVALID_CHARS) != 0;
    context.fallback = utf ? nullptr : (defaultChar != nullptr ? defaultChar : "?");
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setFromUCallBack(converter, FromUnicodeCallback, &context, nullptr, nullptr, &status);
    ucnv_setFallback(converter, (flags & WC_NO_BEST_FIT_CHARS) == 0);

    Converted<char> result;
    const std::size_t room = length * static_cast<std::size_t>(ucnv_getMaxCharSize(converter));
    result.units.resize(room);
    result.offsets.resize(room);
    char* target = result.units.data();
    const UChar* from = source;
    ucnv_fromUnicode(converter, &target, target + room, &from, source + length,
                     result.offsets.data(), TRUE, &status);
    if (context.failed || U_FAILURE(status)) {
        SetErrorCode(context.failed ? ERROR_NO_UNICODE_TRANSLATION : ERROR_INVALID_PARAMETER);
        return 0;
    }
    result.units.resize(static_cast<std::size_t>(target - result.units.data()));
    std::size_t read = 0;
    const int delivered = Deliver(result, dest, destSize, read);
    // Only a character that went out replaced counts.
    if (usedDefaultChar != nullptr) {
        *usedDefaultChar = context.firstDefault < read ? TRUE : FALSE;
    }
    return delivered;
}

BOOL CharToOemA(LPCSTR source, LPSTR dest) {
    static const ByteTable table = MakeByteTable(kAnsiCodePage, kOemCodePage);
    return MapBytes(source, dest, table);
}

BOOL OemToCharA(LPCSTR source, LPSTR dest) {
    static const ByteTable table = MakeByteTable(kOemCodePage, kAnsiCodePage);
    return MapBytes(source, dest, table);
}

}  // namespace nvk::os
