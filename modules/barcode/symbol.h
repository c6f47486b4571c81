// A bar code checked by the engine's own rules and encoded by zint, as
// zint's vector drawing.
#pragma once

#include <zint.h>

#include <memory>
#include <string>

#include "dlsbar.h"

namespace dlsbar {

struct SymbolDeleter {
    void operator()(zint_symbol* symbol) const { ZBarcode_Delete(symbol); }
};
using Symbol = std::unique_ptr<zint_symbol, SymbolDeleter>;

// Encodes the record's text; the status on failure, with a null symbol.
Symbol Encode(const BARCODERECORD& record, Status& status);

// The name of a type, or null for an unknown one.
const char* TypeName(int type);

}  // namespace dlsbar
