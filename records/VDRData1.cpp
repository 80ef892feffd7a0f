#include "records/VDRData1.h"

namespace vdr1 {

#define VDR_SCALAR_WRITER(field)                                                                   \
    void VDRData1::write_##field(void* maintainData, const void* data) {                           \
        if (!zk::refusesNull(maintainData, data, __func__, __LINE__)) {                            \
            zk::copyField<offsetof(VDRData1, field), sizeof(VDRData1::field)>(maintainData, data); \
        }                                                                                          \
    }

#define VDR_ARRAY_WRITER(field, count)                                                           \
    void VDRData1::write_##field(void* maintainData, const void* data) {                         \
        if (!zk::refusesNull(maintainData, data, __func__, __LINE__)) {                          \
            zk::appendElement<offsetof(VDRData1, count), offsetof(VDRData1, field),              \
                              sizeof(VDRData1::field), sizeof(VDRData1::field[0])>(maintainData, \
                                                                                   data);        \
        }                                                                                        \
    }

VDR1_FIELDS(VDR_SCALAR_WRITER, VDR_ARRAY_WRITER)

namespace {

#define VDR_SCALAR_ENTRY(field) {#field, &VDRData1::write_##field},
#define VDR_ARRAY_ENTRY(field, count) VDR_SCALAR_ENTRY(field)

// Filled while the library is loaded, before anything can ask for it.
const zk::Name2FuncMap name2FuncMap = {VDR1_FIELDS(VDR_SCALAR_ENTRY, VDR_ARRAY_ENTRY)};

}  // namespace

const zk::Name2FuncMap* VDRData1::getName2FuncMap() {
    return &name2FuncMap;
}

}  // namespace vdr1
