#include "records/VDRData1.h"

namespace vdr1 {

VDR_DEFINE_WRITERS(VDRData1, VDR1_FIELDS)

}  // namespace vdr1
