#include "qr_picture.h"

#include "command_line/translation.h"
#include "wording/text.h"

#include <gdk-pixbuf/gdk-pixbuf.h>
#include <zbar.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <vector>

namespace kavio::wallet {

namespace {

/// A file of a few kilobytes can claim any size; a good camera's pictures are smaller than this.
constexpr std::int64_t mostPixels = 100'000'000;
/// Smaller pictures are enlarged, because the reader needs more than a pixel or two for each square of the code.
constexpr int smallPicture = 400;
constexpr int enlargement = 4;

struct Free {
    void operator()(GdkPixbuf* pixels) const { g_object_unref(pixels); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(zbar::zbar_image_t* image) const { zbar_image_destroy(image); }
    void operator()(zbar::zbar_image_scanner_t* scanner) const { zbar_image_scanner_destroy(scanner); }
};
using Pixels = std::unique_ptr<GdkPixbuf, Free>;

struct GreyPicture {
    unsigned width;
    unsigned height;
    std::vector<std::uint8_t> brightness;
};

[[noreturn]] void refuse(const std::string& sentence) { throw PictureProblem(sentence); }

/// On white, where it is transparent, and large enough.
Pixels read(const std::string& file, const std::string& name) {
    std::error_code unknown;
    if (!std::filesystem::is_regular_file(file, unknown)) refuse(tr("There is no file '{}'.", printable(name)));
    int width = 0;
    int height = 0;
    if (gdk_pixbuf_get_file_info(file.c_str(), &width, &height) == nullptr)
        refuse(tr("'{}' is not a picture.", printable(name)));
    if (std::int64_t{width} * height > mostPixels) refuse(tr("The picture '{}' is too large.", printable(name)));
    GError* problem = nullptr;
    const Pixels original{gdk_pixbuf_new_from_file(file.c_str(), &problem)};
    const std::unique_ptr<GError, Free> error{problem};
    const auto scale = width < smallPicture && height < smallPicture ? enlargement : 1;
    Pixels result{!original ? nullptr
                            : gdk_pixbuf_composite_color_simple(original.get(), width * scale, height * scale,
                                                                GDK_INTERP_NEAREST, 255, 64, 0xffffff, 0xffffff)};
    if (!result) refuse(tr("The picture '{}' cannot be read.", printable(name)));
    return result;
}

GreyPicture greyOf(const GdkPixbuf* pixels) {
    const auto width = static_cast<std::size_t>(gdk_pixbuf_get_width(pixels));
    const auto height = static_cast<std::size_t>(gdk_pixbuf_get_height(pixels));
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(pixels));
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixels));
    const auto* const bytes = gdk_pixbuf_read_pixels(pixels);
    GreyPicture grey{static_cast<unsigned>(width), static_cast<unsigned>(height), {}};
    grey.brightness.reserve(width * height);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const auto* const colour = bytes + y * rowBytes + x * channels;
            grey.brightness.push_back(static_cast<std::uint8_t>((colour[0] * 3 + colour[1] * 6 + colour[2]) / 10));
        }
    }
    return grey;
}

/// A code that is found twice counts once.
std::set<std::string> codesIn(const GreyPicture& picture) {
    constexpr unsigned long grey = 0x30303859;  // "Y800", one byte per pixel
    const std::unique_ptr<zbar::zbar_image_scanner_t, Free> scanner{zbar::zbar_image_scanner_create()};
    zbar_image_scanner_set_config(scanner.get(), zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
    zbar_image_scanner_set_config(scanner.get(), zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 1);
    zbar_image_scanner_set_config(scanner.get(), zbar::ZBAR_NONE, zbar::ZBAR_CFG_TEST_INVERTED, 1);
    const std::unique_ptr<zbar::zbar_image_t, Free> image{zbar::zbar_image_create()};
    zbar_image_set_format(image.get(), grey);
    zbar_image_set_size(image.get(), picture.width, picture.height);
    zbar_image_set_data(image.get(), picture.brightness.data(), picture.brightness.size(), nullptr);
    zbar_scan_image(scanner.get(), image.get());
    std::set<std::string> codes;
    for (const auto* code = zbar_image_first_symbol(image.get()); code != nullptr; code = zbar_symbol_next(code))
        codes.emplace(zbar_symbol_get_data(code), zbar_symbol_get_data_length(code));
    return codes;
}

}  // namespace

std::string textOfQrCode(const std::string& file, const std::string& name) {
    const auto codes = codesIn(greyOf(read(file, name).get()));
    if (codes.empty()) refuse(tr("There is no QR code in '{}'.", printable(name)));
    if (codes.size() > 1)
        refuse(trn("There is {} QR code in '{}'.", "There are {} QR codes in '{}': cut out the one of the machine.",
                   codes.size(), codes.size(), printable(name)));
    return *codes.begin();
}

}  // namespace kavio::wallet
