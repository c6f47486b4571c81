#include "os/api/nls.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ucnv_err.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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
        if (codePage == CP_UTF8) {
            UErrorCode status = U_ZERO_ERROR;
            converter.reset(ucnv_open("UTF-8", &status));
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
    bool strict = false;         // invalid input fails the call
    const char* fallback = "?";  // the default character, for wide to multi-byte
    bool usedDefault = false;
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
                         int32_t, UChar32, UConverterCallbackReason reason, UErrorCode* status) {
    if (reason > UCNV_IRREGULAR) {
        return;
    }
    auto* state = static_cast<CallbackContext*>(const_cast<void*>(context));
    *status = U_ZERO_ERROR;
    if (state->fallback == nullptr) {  // UTF-8: a lone surrogate
        static constexpr char kReplacementUtf8[] = "\xEF\xBF\xBD";
        ucnv_cbFromUWriteBytes(args, kReplacementUtf8, 3, 0, status);
        return;
    }
    state->usedDefault = true;
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
// needed when `size` is 0.
template <class Unit>
int Deliver(const Converted<Unit>& result, Unit* dest, int size) {
    const auto total = static_cast<int>(result.units.size());
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
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return total;
}

bool ValidSizes(const void* source, int sourceSize, const void* dest, int destSize) {
    return source != nullptr && sourceSize != 0 && sourceSize >= -1 && destSize >= 0 &&
           (destSize == 0 || dest != nullptr);
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

struct CollatorKey {
    std::string locale;
    DWORD flags;
    bool operator<(const CollatorKey& other) const {
        return locale != other.locale ? locale < other.locale : flags < other.flags;
    }
};

// Collators are costly to make and not to be shared between threads.
icu::Collator* CollatorFor(const std::string& locale, DWORD flags) {
    thread_local std::map<CollatorKey, std::unique_ptr<icu::Collator>> collators;
    flags &= NORM_IGNORECASE | NORM_IGNORENONSPACE | NORM_IGNORESYMBOLS;
    auto& slot = collators[CollatorKey{locale, flags}];
    if (!slot) {
        UErrorCode status = U_ZERO_ERROR;
        slot.reset(icu::Collator::createInstance(icu::Locale(locale.c_str()), status));
        if (U_FAILURE(status) || !slot) {
            slot.reset();
            return nullptr;
        }
        const bool ignoreCase = (flags & NORM_IGNORECASE) != 0;
        const bool ignoreAccents = (flags & NORM_IGNORENONSPACE) != 0;
        // Accents weigh at the secondary level and case at the tertiary one;
        // ignoring accents only keeps case through the case level.
        slot->setStrength(ignoreAccents
                              ? icu::Collator::PRIMARY
                              : (ignoreCase ? icu::Collator::SECONDARY : icu::Collator::TERTIARY));
        if (ignoreAccents && !ignoreCase) {
            slot->setAttribute(UCOL_CASE_LEVEL, UCOL_ON, status);
        }
        if ((flags & NORM_IGNORESYMBOLS) != 0) {
            slot->setAttribute(UCOL_ALTERNATE_HANDLING, UCOL_SHIFTED, status);
        }
    }
    return slot.get();
}

// ICU's name of a locale id, the root locale for the invariant one; none for
// an id that ICU doesn't know.
std::optional<std::string> IcuLocaleOf(LCID locale) {
    locale = ConvertDefaultLocale(locale);
    if (locale == LOCALE_INVARIANT) {
        return std::string();
    }
    char name[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getLocaleForLCID(locale, name, sizeof name, &status);
    if (U_FAILURE(status) || length <= 0) {
        return std::nullopt;
    }
    return std::string(name, static_cast<std::size_t>(length));
}

bool ToWide(LPCSTR text, int size, std::vector<WCHAR>& wide) {
    if (size < 0) {
        size = static_cast<int>(std::strlen(text));
    }
    if (size == 0) {
        wide.clear();
        return true;
    }
    const int needed = MultiByteToWideChar(CP_ACP, 0, text, size, nullptr, 0);
    wide.resize(static_cast<std::size_t>(needed));
    return needed > 0 && MultiByteToWideChar(CP_ACP, 0, text, size, wide.data(), needed) == needed;
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize, LPWSTR dest,
                        int destSize) {
    UConverter* converter = ConverterFor(ResolveCodePage(codePage));
    if (converter == nullptr || !ValidSizes(source, sourceSize, dest, destSize)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const auto length = static_cast<std::size_t>(
        sourceSize == -1 ? std::strlen(source) + 1 : static_cast<std::size_t>(sourceSize));
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
    SetErrorCode(ERROR_SUCCESS);
    return Deliver(result, dest, destSize);
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize, LPSTR dest,
                        int destSize, LPCSTR defaultChar, BOOL* usedDefaultChar) {
    const UINT resolved = ResolveCodePage(codePage);
    UConverter* converter = ConverterFor(resolved);
    const bool utf8 = resolved == CP_UTF8;
    if (converter == nullptr || !ValidSizes(source, sourceSize, dest, destSize) ||
        (utf8 && (defaultChar != nullptr || usedDefaultChar != nullptr))) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::size_t length = static_cast<std::size_t>(sourceSize);
    if (sourceSize == -1) {
        length = std::char_traits<WCHAR>::length(source) + 1;
    }
    CallbackContext context;
    context.fallback = utf8 ? nullptr : (defaultChar != nullptr ? defaultChar : "?");
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
    if (U_FAILURE(status)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    result.units.resize(static_cast<std::size_t>(target - result.units.data()));
    if (usedDefaultChar != nullptr) {
        *usedDefaultChar = context.usedDefault ? TRUE : FALSE;
    }
    SetErrorCode(ERROR_SUCCESS);
    return Deliver(result, dest, destSize);
}

BOOL CharToOemA(LPCSTR source, LPSTR dest) {
    static const ByteTable table = MakeByteTable(kAnsiCodePage, kOemCodePage);
    return MapBytes(source, dest, table);
}

BOOL OemToCharA(LPCSTR source, LPSTR dest) {
    static const ByteTable table = MakeByteTable(kOemCodePage, kAnsiCodePage);
    return MapBytes(source, dest, table);
}

int CompareStringA(LCID locale, DWORD flags, LPCSTR text1, int size1, LPCSTR text2, int size2) {
    const std::optional<std::string> name = IcuLocaleOf(locale);
    icu::Collator* collator = name ? CollatorFor(*name, flags) : nullptr;
    std::vector<WCHAR> left;
    std::vector<WCHAR> right;
    if (collator == nullptr || text1 == nullptr || text2 == nullptr || size1 < -1 || size2 < -1 ||
        !ToWide(text1, size1, left) || !ToWide(text2, size2, right)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult order =
        collator->compare(left.data(), static_cast<int32_t>(left.size()), right.data(),
                          static_cast<int32_t>(right.size()), status);
    if (U_FAILURE(status)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    SetErrorCode(ERROR_SUCCESS);
    return order == UCOL_LESS ? CSTR_LESS_THAN
                              : (order == UCOL_EQUAL ? CSTR_EQUAL : CSTR_GREATER_THAN);
}

}  // namespace nvk::os
