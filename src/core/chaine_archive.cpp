// The archive form of Chaine: the framework's string length prefix, then the
// characters without a terminator.
#include <algorithm>

#include "nvk/afx/archive.h"
#include "nvk/afx/exceptions.h"
#include "nvk/core/chaine.h"

void Chaine::Serialize(CArchive& archive) {
    if (archive.IsStoring()) {
        archive << *this;
    } else {
        archive >> *this;
    }
}

CArchive& operator<<(CArchive& archive, const Chaine& value) {
    const auto length = static_cast<std::uint32_t>(value.Length());
    archive.WriteStringLength(length);
    archive.Write(value.c_str(), length);
    return archive;
}

CArchive& operator>>(CArchive& archive, Chaine& value) {
    const std::uint32_t length = archive.ReadStringLength();
    if (length == 0) {
        value.Empty();
        return archive;
    }
    // Read in steps, so that a damaged length meets the end of the data
    // before it has claimed its whole size in memory.
    constexpr std::uint32_t kStep = 1 << 16;
    Chaine text;
    for (std::uint32_t done = 0; done < length;) {
        const std::uint32_t step = std::min(kStep, length - done);
        char* buffer = text.SetLength(static_cast<int>(done + step));
        if (archive.Read(buffer + done, step) != step) {
            AfxThrowArchiveException(CArchiveException::endOfFile);
        }
        done += step;
    }
    value = text;
    return archive;
}
