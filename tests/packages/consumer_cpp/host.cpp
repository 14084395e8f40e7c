// A host in C++11: opens a channel, shows it a grey frame, and expects an answer without boxes.
#include <ORVA_FireDetection.h>

#include <iostream>
#include <vector>

int main() {
    const unsigned int width = 64;
    const unsigned int height = 64;
    std::vector<unsigned char> picture(width * (height + height / 2 + 1), 128);
    fd_yuv_frame frame = fd_yuv_frame();
    frame.format = FD_PIXEL_FORMAT_YUV420SP;
    frame.width = width;
    frame.height = height;
    frame.virt_addr[0] = picture.data();
    frame.virt_addr[1] = picture.data() + width * height;
    frame.stride[0] = frame.stride[1] = width;

    const fd_rect whole_picture = {0, 1, 0, 1, 1, 1, 1, 1};
    fd_result result = fd_result();
    int handle = -1;
    if (ORVA_FireDetection_Init() != FD_OK) return 1;
    if (ORVA_FireDetection_Start(&handle, whole_picture) != FD_OK || handle != 0) return 2;
    if (ORVA_FireDetection_SetFrame(handle, frame, &result) != FD_OK || result.count != 0) return 3;
    if (ORVA_FireDetection_Stop(handle) != FD_OK) return 4;
    if (ORVA_FireDetection_UnInit() != FD_OK) return 5;
    std::cout << "a frame was answered\n";
    return 0;
}
