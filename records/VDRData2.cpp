#include "records/VDRData2.h"

namespace vdr2 {

#define VDR_SCALAR_WRITER(field)                                                                   \
    void VDRData2::write_##field(void* maintainData, const void* data) {                           \
        if (!zk::refusesNull(maintainData, data, __func__, __LINE__)) {                            \
            zk::copyField<offsetof(VDRData2, field), sizeof(VDRData2::field)>(maintainData, data); \
        }                                                                                          \
    }

#define VDR_ARRAY_WRITER(field, count)                                                           \
    void VDRData2::write_##field(void* maintainData, const void* data) {                         \
        if (!zk::refusesNull(maintainData, data, __func__, __LINE__)) {                          \
            zk::appendElement<offsetof(VDRData2, count), offsetof(VDRData2, field),              \
                              sizeof(VDRData2::field), sizeof(VDRData2::field[0])>(maintainData, \
                                                                                   data);        \
        }                                                                                        \
    }

VDR2_FIELDS(VDR_SCALAR_WRITER, VDR_ARRAY_WRITER)

namespace {

#define VDR_SCALAR_ENTRY(field) {#field, &VDRData2::write_##field},
#define VDR_ARRAY_ENTRY(field, count) VDR_SCALAR_ENTRY(field)

// Filled while the library is loaded, before anything can ask for it.
const zk::Name2FuncMap name2FuncMap = {VDR2_FIELDS(VDR_SCALAR_ENTRY, VDR_ARRAY_ENTRY)};

}  // namespace

const zk::Name2FuncMap* VDRData2::getName2FuncMap() {
    return &name2FuncMap;
}

}  // namespace vdr2
