#pragma once

#include "device/camera.h"
#include "device/position.h"
#include "page.h"

#include <kavio/machine.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace kavio::wallet_gtk {

/// The person's own machines, or those that a search finds: by code, by the text or a picture of a QR code, or near a
/// position.
class MachinesTab final : public Page {
public:
    explicit MachinesTab(Shell& owner);
    void onShown() override { keep(search()); }

private:
    struct Search {
        std::string code = {};
        std::optional<device::Position> position = {};
        bool isForOne = false;  // to be shown at once
    };

    void addPictures();
    /// Fetches and shows what `mSearch` asks for.
    Task search();
    std::shared_ptr<const MachineFilter> filter() const;
    std::string heading() const;
    void begin(Search search);
    void searchText();
    void searchPicture(const std::filesystem::path& file, const std::string& name, bool isTemporary = false);
    void searchHere();
    void show(const Machines& machines);
    void openPicture();
    void pastePicture();
    void scan();
    void stopScanning();

    Search mSearch;
    std::unique_ptr<device::Camera> mCamera;
};

}  // namespace kavio::wallet_gtk
