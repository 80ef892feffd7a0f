#pragma once

#include "records/FieldWriter.h"
#include "records/VDRData1Layout.h"

namespace vdr1 {

// The record of level 1 with what the recorder does to it.
struct VDRData1 : VDRData1Layout {
    // One writer per field, named after it: write_zoomRatio.
    VDR_DECLARE_WRITERS(VDR1_FIELDS)

    // Field name -> writer. Built when the library is loaded, never changed. Any thread.
    static const zk::Name2FuncMap* getName2FuncMap();

    // Appends the record at `srcData` (4096 bytes) as one line of comma-separated text to the
    // string in `destData` (a buffer of 4096 bytes). A line that does not fit is cut, loses its
    // newline and leaves an error in the log. Reentrant.
    static void makeFrameContent(const void* srcData, void* destData);
};

}  // namespace vdr1
