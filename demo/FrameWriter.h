#pragma once

#include "demo/FrameFields.h"
#include "recorder/IVideoDataRecoder.h"

namespace demo {

// Hands a frame's fields to the recorder, by tag and by the address of the value, which the
// recorder copies before it returns. Frames must have been taken with VDRProcessing. Any thread.
class FrameWriter {
public:
    // `recorder` must outlive this.
    explicit FrameWriter(zk::IVideoDataRecoder& recorder) : mRecorder(recorder) {}

    // What is known when the frame enters the pipeline: many fields in one call.
    void writeHead(const FrameFields& fields) const;
    // What is known when it leaves: lists, element by element, and the rest.
    void writeResults(const FrameFields& fields) const;
    // What a live photo needs beside the head, into the copy that was cached for it.
    void writeToLivePhoto(const FrameFields& fields) const;

private:
    template <typename List>
    void append(uint32_t frame, uint32_t tag, const List& elements) const;

    zk::IVideoDataRecoder& mRecorder;
};

}  // namespace demo
