// IBAN text: cleaning, both setters, the output forms and the national
// conversions must hold together on any input.
#include <cstddef>
#include <cstdint>

#include "nvk/codes/iban.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Chaine text(data, static_cast<int>(size));
    const bool partial = size > 0 && (data[0] & 1) != 0;
    EIBAN iban(text, partial);
    const Chaine edi = iban.GetIBAN_EDI();
    if (iban.IsValid()) {
        // The electronic form reads back as the same number, unless its
        // content has the 30 characters that only partial input takes, or it
        // starts with the word "IBAN" (country "IB", check "AN"), which
        // reading drops as the leading word.
        const bool readsBack = iban.Content().Length() < 30 && edi.Left(4) != "IBAN";
        if (edi.IsEmpty() || iban.GetIBAN_Printable().IsEmpty() ||
            (readsBack && !(EIBAN(edi) == iban))) {
            __builtin_trap();
        }
    } else if (!edi.IsEmpty()) {
        __builtin_trap();
    }
    for (unsigned i = 0; i <= iban.PrintBlockCount(); ++i) {
        iban.PrintBlock(i);
    }
    EIBAN fromRib(iban.GetRIB());
    EIBAN fromSwiss(iban.GetSwissAccount());
    fromRib.IsValid();
    fromSwiss.IsValid();

    // The same bytes as a raw record, unterminated fields included.
    sIBAN record;
    for (std::size_t i = 0; i < sizeof record; ++i) {
        reinterpret_cast<char*>(&record)[i] = i < size ? static_cast<char>(data[i]) : 0;
    }
    EIBAN raw;
    raw = record;
    raw.IsValid();
    raw.GetIBAN_Printable();
    raw.Validate();
    raw.RecomputeCheckSum();
    return 0;
}
