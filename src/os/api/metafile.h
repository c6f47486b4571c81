// Enhanced metafiles: drawings recorded as the documented EMF records, and
// played back on any device context scaled to a rectangle.
#pragma once

#include "nvk/os/gdi_types.h"

namespace nvk::os {

// A device context that records, drawing in the pixels of `reference` (the
// screen when null); `frame`, in hundredths of a millimetre of that device,
// is the part of the drawing that plays onto a rectangle. A null frame takes
// the bounds of the drawing. A file name, if given, gets the records when the
// metafile is closed.
HDC CreateEnhMetaFileA(HDC reference, LPCSTR fileName, const RECT* frame, LPCSTR description);
HENHMETAFILE CloseEnhMetaFile(HDC dc);
BOOL DeleteEnhMetaFile(HENHMETAFILE metafile);
// The records as bytes; a null buffer asks for the size.
UINT GetEnhMetaFileBits(HENHMETAFILE metafile, UINT size, LPBYTE buffer);
// A metafile from records, checked: sizes, signature and the final EMR_EOF.
HENHMETAFILE SetEnhMetaFileBits(UINT size, const BYTE* data);

// Calls `callback` on each record with the handle table, which holds the
// objects the records create; drawing is mapped from the frame onto `rect`.
// Stops when the callback returns 0, and then returns FALSE.
BOOL EnumEnhMetaFile(HDC dc, HENHMETAFILE metafile, ENHMFENUMPROC callback, LPVOID data,
                     const RECT* rect);
BOOL PlayEnhMetaFile(HDC dc, HENHMETAFILE metafile, const RECT* rect);
// Plays one record; records of kinds not known here are skipped.
BOOL PlayEnhMetaFileRecord(HDC dc, HANDLETABLE* table, const ENHMETARECORD* record, UINT handles);

}  // namespace nvk::os
