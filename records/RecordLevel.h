#pragma once

#include <cstdint>

#include "records/FieldWriter.h"

namespace zk {

// What there is for the records of a level. Everything that depends on the level asks for it here.
struct RecordLevel {
    int32_t number;
    const char* name;  // in messages
    const Name2FuncMap* (*getName2FuncMap)();
    void (*makeFrameContent)(const void* srcData, void* destData);

    // Null where there is no such level. Any thread.
    static const RecordLevel* find(int32_t number);
};

}  // namespace zk
