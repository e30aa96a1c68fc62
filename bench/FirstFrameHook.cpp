// Loaded with LD_PRELOAD into a program we cannot instrument (qpwgraph, the reference start-up):
// its first hand-over of window pixels to the X server is its first frame. At that moment this
// prints the same "painted" and "settled" lines the start-up probe prints, with the resident
// size, and ends the process, so that the benchmark times it exactly like our own start-up.
#include "ResidentSize.h"

#include <cstdio>
#include <dlfcn.h>
#include <unistd.h>
#include <xcb/xproto.h>

namespace {

[[noreturn]] void reportFirstFrame()
{
    const long kb = orvan::bench::residentKilobytes();
    std::printf("painted %ld\nsettled %ld\n", kb, kb);
    std::fflush(stdout);
    _exit(0);
}

/// The real function, from the library already loaded. Qt loads its X11 plugin, and with it the
/// X libraries, privately (dlopen), so RTLD_NEXT would not find them.
template <typename Function>
Function real(const char* library, const char* name)
{
    void* handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    return reinterpret_cast<Function>(handle ? dlsym(handle, name) : nullptr);
}

} // namespace

// Qt's X11 backing store sends a frame with one of these two. The real call runs first, so the
// frame does reach the server. (The shared-memory call's header is not installed; its
// declaration is written out here.)
extern "C" xcb_void_cookie_t xcb_shm_put_image(xcb_connection_t* c, xcb_drawable_t drawable, xcb_gcontext_t gc,
                                               uint16_t totalWidth, uint16_t totalHeight, uint16_t srcX,
                                               uint16_t srcY, uint16_t srcWidth, uint16_t srcHeight, int16_t dstX,
                                               int16_t dstY, uint8_t depth, uint8_t format, uint8_t sendEvent,
                                               uint32_t shmseg, uint32_t offset)
{
    using Call = decltype(&xcb_shm_put_image);
    static const Call call = real<Call>("libxcb-shm.so.0", "xcb_shm_put_image");
    if (call)
        call(c, drawable, gc, totalWidth, totalHeight, srcX, srcY, srcWidth, srcHeight, dstX, dstY, depth, format,
         sendEvent, shmseg, offset);
    reportFirstFrame();
}

extern "C" xcb_void_cookie_t xcb_put_image(xcb_connection_t* c, uint8_t format, xcb_drawable_t drawable,
                                           xcb_gcontext_t gc, uint16_t width, uint16_t height, int16_t dstX,
                                           int16_t dstY, uint8_t leftPad, uint8_t depth, uint32_t dataLength,
                                           const uint8_t* data)
{
    using Call = decltype(&xcb_put_image);
    static const Call call = real<Call>("libxcb.so.1", "xcb_put_image");
    if (call)
        call(c, format, drawable, gc, width, height, dstX, dstY, leftPad, depth, dataLength, data);
    reportFirstFrame();
}
