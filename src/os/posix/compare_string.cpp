// CompareStringA over ICU's collation of the locale, brought to Windows'
// order where the two differ: the ASCII symbols in Windows' order, the word
// sort's hyphen and apostrophe, and control characters that weigh.
#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/tblcoll.h>
#include <unicode/uloc.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "os/api/nls.h"
#include "os/posix/handle.h"
#include "os/posix/locale_items.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

constexpr DWORD kKnownFlags =
    NORM_IGNORECASE | NORM_IGNORENONSPACE | NORM_IGNORESYMBOLS | SORT_STRINGSORT |
    0x8 /* SORT_DIGITSASNUMBERS */ | 0x10 /* LINGUISTIC_IGNORECASE */ |
    0x20 /* LINGUISTIC_IGNOREDIACRITIC */ | 0x10000 /* NORM_IGNOREKANATYPE */ |
    0x20000 /* NORM_IGNOREWIDTH */ | 0x8000000 /* NORM_LINGUISTIC_CASING */;

// Windows orders the ASCII symbols after the apostrophe and the hyphen in
// this order, where ICU's root order puts "_" before "." and "." before "#".
// (ICU's rule syntax: quoted characters, '' an apostrophe, \\ a backslash.)
constexpr char16_t kSymbolOrder[] =
    uR"(&[before 1]' '<''<'-')"
    uR"(&' '<'!'<'"'<'#'<'$'<'%'<'&'<'('<')'<'*'<','<'.'<'/'<':'<';'<'?'<'@'<'['<\\<']')"
    uR"(<'^'<'_'<'`'<'{'<'|'<'}'<'~'<'+'<'<'<'='<'>')";

struct CollatorKey {
    std::string locale;
    DWORD flags;
    bool operator<(const CollatorKey& other) const {
        return locale != other.locale ? locale < other.locale : flags < other.flags;
    }
};

std::unique_ptr<icu::Collator> MakeCollator(const std::string& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> base(
        icu::Collator::createInstance(icu::Locale(locale.c_str()), status));
    auto* rules = dynamic_cast<icu::RuleBasedCollator*>(base.get());
    if (U_FAILURE(status) || rules == nullptr) {
        return nullptr;
    }
    icu::UnicodeString tailoring = rules->getRules();
    tailoring.append(icu::UnicodeString(kSymbolOrder));
    status = U_ZERO_ERROR;
    auto made = std::make_unique<icu::RuleBasedCollator>(tailoring, status);
    return U_SUCCESS(status) ? std::move(made) : std::move(base);
}

// Collators are costly to make and not to be shared between threads.
icu::Collator* CollatorFor(const std::string& locale, DWORD flags) {
    thread_local std::map<CollatorKey, std::unique_ptr<icu::Collator>> collators;
    flags &= NORM_IGNORECASE | NORM_IGNORENONSPACE | NORM_IGNORESYMBOLS;
    auto& slot = collators[CollatorKey{locale, flags}];
    if (!slot) {
        slot = MakeCollator(locale);
        if (!slot) {
            return nullptr;
        }
        UErrorCode status = U_ZERO_ERROR;
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

// The text in UTF-16, read in the locale's own ANSI code page.
bool ToWide(UINT codePage, LPCSTR text, int size, std::u16string& wide) {
    const int length = size < 0 ? static_cast<int>(std::char_traits<char>::length(text)) : size;
    wide.clear();
    if (length == 0) {
        return true;
    }
    const int needed = MultiByteToWideChar(codePage, 0, text, length, nullptr, 0);
    wide.resize(static_cast<std::size_t>(needed));
    return needed > 0 &&
           MultiByteToWideChar(codePage, 0, text, length, wide.data(), needed) == needed;
}

int Order(int difference) {
    return difference < 0 ? CSTR_LESS_THAN : (difference > 0 ? CSTR_GREATER_THAN : CSTR_EQUAL);
}

// The word sort weighs the hyphen and the apostrophe last of all, so that
// "co-op" sorts beside "coop": the texts without them decide first.
bool IsWordSortSpecial(char16_t c) {
    return c == u'-' || c == u'\'';
}

// What the collation leaves equal: the word sort's special characters, then
// control characters, which Windows weighs and ICU ignores. A text without
// them, or with fewer, comes first.
int TieBreak(const std::u16string& left, const std::u16string& right, bool (*counts)(char16_t)) {
    std::u16string a = left;
    std::u16string b = right;
    std::erase_if(a, [counts](char16_t c) { return !counts(c); });
    std::erase_if(b, [counts](char16_t c) { return !counts(c); });
    // The apostrophe weighs less than the hyphen, as their codes do.
    return a.compare(b);
}

bool IsControl(char16_t c) {
    return c < 0x20 || c == 0x7F;
}

}  // namespace

int CompareStringA(LCID locale, DWORD flags, LPCSTR text1, int size1, LPCSTR text2, int size2) {
    if ((flags & ~kKnownFlags) != 0) {
        SetErrorCode(ERROR_INVALID_FLAGS);
        return 0;
    }
    locale = ConvertDefaultLocale(locale);
    const std::optional<std::string> name = IcuLocaleOf(locale);
    icu::Collator* collator = name ? CollatorFor(*name, flags) : nullptr;
    UINT codePage = posix::AnsiCodePageOf(locale);
    codePage = codePage == 0 ? CP_ACP : codePage;
    std::u16string left;
    std::u16string right;
    if (collator == nullptr || text1 == nullptr || text2 == nullptr || size1 < -1 || size2 < -1 ||
        !ToWide(codePage, text1, size1, left) || !ToWide(codePage, text2, size2, right)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const bool wordSort = (flags & (SORT_STRINGSORT | NORM_IGNORESYMBOLS)) == 0;
    std::u16string leftWords = left;
    std::u16string rightWords = right;
    if (wordSort) {
        std::erase_if(leftWords, IsWordSortSpecial);
        std::erase_if(rightWords, IsWordSortSpecial);
    }
    UErrorCode status = U_ZERO_ERROR;
    const UCollationResult order =
        collator->compare(leftWords.data(), static_cast<int32_t>(leftWords.size()),
                          rightWords.data(), static_cast<int32_t>(rightWords.size()), status);
    if (U_FAILURE(status)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (order != UCOL_EQUAL) {
        return order == UCOL_LESS ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
    }
    if (wordSort) {
        if (const int special = TieBreak(left, right, IsWordSortSpecial); special != 0) {
            return Order(special);
        }
    }
    return Order(TieBreak(left, right, IsControl));
}

}  // namespace nvk::os
