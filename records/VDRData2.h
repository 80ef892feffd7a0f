#pragma once

#include "records/FieldWriter.h"
#include "records/VDRData2Layout.h"

namespace vdr2 {

// The record of level 2 with what the recorder does to it.
struct VDRData2 : VDRData2Layout {
    // One writer per field, named after it: write_zoomRatio.
    VDR_DECLARE_WRITERS(VDR2_FIELDS)

    // Field name -> writer. Built when the library is loaded, never changed. Any thread.
    static const zk::Name2FuncMap* getName2FuncMap();

    // Appends the record at `srcData` (4096 bytes) as one line of comma-separated text to the
    // string in `destData` (a buffer of 4096 bytes). A line that does not fit is cut, loses its
    // newline and leaves an error in the log. Reentrant.
    static void makeFrameContent(const void* srcData, void* destData);
};

}  // namespace vdr2
