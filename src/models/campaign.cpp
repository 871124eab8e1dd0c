#include "models/debug_text.h"

#include <kavio/campaign.h>

#include <utility>

namespace kavio {

Image::Image(std::string file_, std::int64_t width_, std::int64_t height_, bool wasUploaded_, std::int64_t dpi_,
             bool iOS_)
    : file(std::move(file_)), width(width_), height(height_), wasUploaded(wasUploaded_), dpi(dpi_), iOS(iOS_) {}

std::string Image::debugDescription() const {
    return DebugText()
        .line("{file: ", file)
        .line("width: ", width)
        .line("height: ", height)
        .line("was uploaded: ", wasUploaded)
        .line("dpi: ", dpi)
        .line("iOS: ", iOS, "}");
}

LookAndFeel::LookAndFeel(std::string imageUrl_, std::string backgroudColor_, std::string textColor_,
                         std::string receiptText_, std::string punchCardText_, Images images_)
    : imageUrl(std::move(imageUrl_)),
      backgroudColor(std::move(backgroudColor_)),
      textColor(std::move(textColor_)),
      receiptText(std::move(receiptText_)),
      punchCardText(std::move(punchCardText_)),
      images(std::move(images_)) {}

std::string LookAndFeel::debugDescription() const {
    return DebugText()
        .line("{image URL: ", imageUrl)
        .line("backgroud color: ", backgroudColor)
        .line("text color: ", textColor)
        .line("receipt text: ", receiptText)
        .line("punch card text: ", punchCardText)
        .line("images: ", images, "}");
}

Campaign::Campaign(std::int64_t id_, std::string name_, std::string title_, std::string description_,
                   std::int64_t punched_, std::int64_t totalPunches_, std::optional<Date> created_,
                   std::optional<Date> updated_, std::optional<Date> expiration_, std::optional<std::string> imageUrl_,
                   std::int64_t punchCardId_, std::shared_ptr<const LookAndFeel> lookAndFeel_)
    : id(id_),
      name(std::move(name_)),
      title(std::move(title_)),
      description(std::move(description_)),
      punched(punched_),
      totalPunches(totalPunches_),
      created(created_),
      updated(updated_),
      expiration(expiration_),
      imageUrl(std::move(imageUrl_)),
      punchCardId(punchCardId_),
      lookAndFeel(std::move(lookAndFeel_)) {}

std::string Campaign::debugDescription() const {
    return DebugText()
        .line("{ID: ", id)
        .line("name: ", name)
        .line("title: ", title)
        .line("description: ", description)
        .line("punched: ", punched)
        .line("totalPunches: ", totalPunches)
        .line("created: ", created)
        .line("updated: ", updated)
        .line("expiration: ", expiration)
        .line("imageUrl: ", imageUrl)
        .line("punchCardId: ", punchCardId)
        .line("lookAndFeel: ", lookAndFeel, "}");
}

}  // namespace kavio
