#include "camera.h"

#include "command_line/translation.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <zbar.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kavio::device {

namespace {

/// Of a size that a code can be read in, and that is read quickly. From there on, frames are dropped while one is read.
constexpr auto* reader =
    "capsfilter name=source caps=\"video/x-raw,width=[1,1280],height=[1,1280];"
    "image/jpeg,width=[1,1280],height=[1,1280]\" "
    "! decodebin ! videoconvert ! video/x-raw,format=RGB ! appsink name=frames max-buffers=1 drop=true";

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(zbar::zbar_image_t* image) const { zbar_image_destroy(image); }
    void operator()(zbar::zbar_image_scanner_t* scanner) const { zbar_image_scanner_destroy(scanner); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

const char* describedSource() { return std::getenv("KAVIO_CAMERA"); }

Owned<GstDevice> firstDevice() {
    const Owned<GstDeviceMonitor> monitor{gst_device_monitor_new()};
    gst_device_monitor_add_filter(monitor.get(), "Video/Source", nullptr);
    auto* const devices = gst_device_monitor_get_devices(monitor.get());
    Owned<GstDevice> first{devices == nullptr ? nullptr : GST_DEVICE(g_object_ref(devices->data))};
    g_list_free_full(devices, g_object_unref);
    return first;
}

/// Null where there is none, or with an error.
GstElement* makeSource(GError** error) {
    if (const auto* const description = describedSource())
        return gst_parse_bin_from_description(description, TRUE, error);
    const auto device = firstDevice();
    return device ? gst_device_create_element(device.get(), nullptr) : nullptr;
}

/// Null and a problem unless it can be had.
Owned<GstElement> makePipeline(std::string& problem) {
    GError* error = nullptr;
    auto* const source = makeSource(&error);
    auto* const pipeline = source != nullptr ? gst_parse_launch(reader, &error) : nullptr;
    const Owned<GError> owned{error};
    if (owned || source == nullptr) {
        problem = owned ? tr("The camera cannot be used: {}", owned->message) : tr("There is no camera.");
        for (auto* const unused : {source, pipeline})
            if (unused != nullptr) gst_object_unref(unused);
        return nullptr;
    }
    const Owned<GstElement> next{gst_bin_get_by_name(GST_BIN(pipeline), "source")};
    gst_bin_add(GST_BIN(pipeline), source);
    gst_element_link(source, next.get());
    return Owned<GstElement>(GST_ELEMENT(gst_object_ref_sink(pipeline)));
}

std::vector<std::uint8_t> brightnessOf(const GstVideoFrame& frame) {
    const auto* const bytes = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    std::vector<std::uint8_t> brightness;
    for (int y = 0; y < GST_VIDEO_FRAME_HEIGHT(&frame); ++y) {
        const auto* colour = bytes + std::ptrdiff_t{y} * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
        for (int x = 0; x < GST_VIDEO_FRAME_WIDTH(&frame); ++x, colour += 3)
            brightness.push_back(static_cast<std::uint8_t>((colour[0] * 3 + colour[1] * 6 + colour[2]) / 10));
    }
    return brightness;
}

Owned<GdkPaintable> paintableOf(const GstVideoFrame& frame) {
    const auto stride = static_cast<std::size_t>(GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0));
    const auto height = GST_VIDEO_FRAME_HEIGHT(&frame);
    auto* const bytes = g_bytes_new(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0), stride * static_cast<std::size_t>(height));
    Owned<GdkPaintable> texture{
        GDK_PAINTABLE(gdk_memory_texture_new(GST_VIDEO_FRAME_WIDTH(&frame), height, GDK_MEMORY_R8G8B8, bytes, stride))};
    g_bytes_unref(bytes);
    return texture;
}

}  // namespace

class Camera::Parts : public std::enable_shared_from_this<Parts> {
public:
    Parts(std::function<void(GdkPaintable*)> onPicture, std::function<void(std::string)> onCode,
          std::function<void(std::string)> onProblem)
        : mOnPicture(std::move(onPicture)), mOnCode(std::move(onCode)), mOnProblem(std::move(onProblem)) {
        zbar_image_scanner_set_config(mScanner.get(), zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
        zbar_image_scanner_set_config(mScanner.get(), zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 1);
        zbar_image_scanner_set_config(mScanner.get(), zbar::ZBAR_NONE, zbar::ZBAR_CFG_TEST_INVERTED, 1);
    }

    void start() {
        std::string problem;
        mPipeline = makePipeline(problem);
        if (!mPipeline) return tell({weak_from_this(), {}, {}, problem});
        const Owned<GstElement> frames{gst_bin_get_by_name(GST_BIN(mPipeline.get()), "frames")};
        GstAppSinkCallbacks callbacks{};
        callbacks.new_sample = read;
        gst_app_sink_set_callbacks(GST_APP_SINK(frames.get()), &callbacks, this, nullptr);
        gst_bus_add_watch(Owned<GstBus>(gst_element_get_bus(mPipeline.get())).get(), noteMessage, this);
        gst_element_set_state(mPipeline.get(), GST_STATE_PLAYING);
    }

    /// Nothing is read or told any more.
    void stop() {
        mIsOver = true;
        if (!mPipeline) return;
        gst_element_set_state(mPipeline.get(), GST_STATE_NULL);
        gst_bus_remove_watch(Owned<GstBus>(gst_element_get_bus(mPipeline.get())).get());
        mPipeline.reset();
    }

private:
    /// What is told to the main thread.
    struct Seen {
        std::weak_ptr<Parts> by;
        Owned<GdkPaintable> frame;
        std::optional<std::string> code;
        std::string problem;
    };

    static void tell(Seen seen) {
        g_idle_add_full(G_PRIORITY_DEFAULT, hear, std::make_unique<Seen>(std::move(seen)).release(),
                        [](gpointer data) { delete static_cast<Seen*>(data); });
    }

    static gboolean noteMessage(GstBus*, GstMessage* message, gpointer data) {
        if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ERROR) return G_SOURCE_CONTINUE;
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        const Owned<GError> owned{error};
        tell(
            {static_cast<Parts*>(data)->weak_from_this(), {}, {}, tr("The camera cannot be used: {}", owned->message)});
        return G_SOURCE_CONTINUE;
    }

    /// In a thread of GStreamer's, which ends before the parts do.
    static GstFlowReturn read(GstAppSink* frames, gpointer data) {
        auto* const parts = static_cast<Parts*>(data);
        const Owned<GstSample> sample{gst_app_sink_pull_sample(frames)};
        if (!sample || parts->mIsTold.exchange(true)) return GST_FLOW_OK;  // the last frame is not drawn yet
        GstVideoInfo info;
        GstVideoFrame frame;
        if (gst_video_info_from_caps(&info, gst_sample_get_caps(sample.get())) == FALSE ||
            gst_video_frame_map(&frame, &info, gst_sample_get_buffer(sample.get()), GST_MAP_READ) == FALSE)
            return GST_FLOW_ERROR;
        tell({parts->weak_from_this(), paintableOf(frame), parts->codeIn(frame), {}});
        gst_video_frame_unmap(&frame);
        return GST_FLOW_OK;
    }

    /// None where there are different ones: which of them is meant, nobody knows.
    std::optional<std::string> codeIn(const GstVideoFrame& frame) const {
        constexpr unsigned long grey = 0x30303859;  // "Y800", one byte per pixel
        const auto brightness = brightnessOf(frame);
        const Owned<zbar::zbar_image_t> image{zbar::zbar_image_create()};
        zbar_image_set_format(image.get(), grey);
        zbar_image_set_size(image.get(), static_cast<unsigned>(GST_VIDEO_FRAME_WIDTH(&frame)),
                            static_cast<unsigned>(GST_VIDEO_FRAME_HEIGHT(&frame)));
        zbar_image_set_data(image.get(), brightness.data(), brightness.size(), nullptr);
        zbar_scan_image(mScanner.get(), image.get());
        std::optional<std::string> found;
        for (const auto* code = zbar_image_first_symbol(image.get()); code != nullptr; code = zbar_symbol_next(code)) {
            const std::string text(zbar_symbol_get_data(code), zbar_symbol_get_data_length(code));
            if (found && text != *found) return std::nullopt;
            found = text;
        }
        return found;
    }

    static gboolean hear(gpointer data) {
        auto& seen = *static_cast<Seen*>(data);
        if (const auto parts = seen.by.lock()) parts->hear(seen);
        return G_SOURCE_REMOVE;
    }

    void hear(Seen& seen) {
        if (mIsOver) return;
        if (!seen.problem.empty()) {
            stop();
            return mOnProblem(seen.problem);
        }
        mOnPicture(seen.frame.get());
        const bool isNew = seen.code && seen.code != mCode;
        mCode = seen.code;
        mIsTold = false;
        if (isNew) mOnCode(*seen.code);
    }

    const std::function<void(GdkPaintable*)> mOnPicture;
    const std::function<void(std::string)> mOnCode;
    const std::function<void(std::string)> mOnProblem;
    const Owned<zbar::zbar_image_scanner_t> mScanner{zbar::zbar_image_scanner_create()};
    Owned<GstElement> mPipeline;
    std::optional<std::string> mCode;
    std::atomic<bool> mIsTold = false;
    bool mIsOver = false;
};

bool Camera::isThere() {
    gst_init(nullptr, nullptr);
    return describedSource() != nullptr || firstDevice() != nullptr;
}

Camera::Camera(std::function<void(GdkPaintable*)> onPicture, std::function<void(std::string)> onCode,
               std::function<void(std::string)> onProblem)
    : mParts(std::make_shared<Parts>(std::move(onPicture), std::move(onCode), std::move(onProblem))) {
    gst_init(nullptr, nullptr);
    mParts->start();
}

Camera::~Camera() { mParts->stop(); }
}  // namespace kavio::device
