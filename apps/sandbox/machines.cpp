#include "service.h"

namespace kavio::sandbox {

nlohmann::json lookAndFeelReply(const Campaign& campaign) {
    return {{"images_url", "https://images.kavio.example/"},
            {"backgroundColor", campaign.background},
            {"textColor", campaign.text},
            {"receiptText", "Thank you, see you soon"},
            {"punchCardText", campaign.title},
            {"images",
             {{{"file", "punch.png"}, {"w", 96}, {"h", 96}, {"wasUploaded", true}, {"dpi", 326}, {"ios", true}}}}};
}

Routes machineRoutes() { return {}; }

}  // namespace kavio::sandbox
