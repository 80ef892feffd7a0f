#include <recorder/IVideoDataRecoder.h>

#include <cstdio>

int main() {
    bool isOpen = false;
    zk::getVideoDataRecoderInstance()->initialize(1, -1);
    zk::getVideoDataRecoderInstance()->getVDRStatus(&isOpen);
    zk::getVideoDataRecoderInstance()->unInitialize();
    std::puts(isOpen ? "the recorder opens" : "the recorder stays closed");
    return isOpen ? 0 : 1;
}
