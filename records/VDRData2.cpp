#include "records/VDRData2.h"

namespace vdr2 {

VDR_DEFINE_WRITERS(VDRData2, VDR2_FIELDS)

}  // namespace vdr2
