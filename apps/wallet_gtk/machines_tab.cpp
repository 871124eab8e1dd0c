#include "machines_tab.h"

#include "command_line/numbers.h"
#include "command_line/translation.h"
#include "machine_page.h"
#include "shell.h"
#include "wording/distance.h"
#include "wording/names.h"
#include "wording/qr_picture.h"
#include "wording/text.h"

#include <kavio/platform/platform.h>

#include <glib/gstdio.h>

#include <cmath>
#include <thread>

namespace kavio::wallet_gtk {

namespace {

/// "52.52, 13.41"; absent for anything else.
std::optional<device::Position> positionIn(std::string text) {
    std::erase(text, ' ');
    const auto comma = text.find(',');
    if (comma == std::string::npos) return std::nullopt;
    const auto latitude = command_line::numberFrom<double>(text.substr(0, comma));
    const auto longitude = command_line::numberFrom<double>(text.substr(comma + 1));
    const bool isPosition = latitude && longitude && std::abs(*latitude) <= 90 && std::abs(*longitude) <= 180;
    return isPosition ? std::optional{device::Position{*latitude, *longitude}} : std::nullopt;
}

std::string subtitleOf(const Machine& machine, const std::optional<device::Position>& position) {
    std::string text;
    for (const auto& part :
         {wallet::machineTypeName(machine.type),
          position ? wallet::distanceText(wallet::metresBetween(position->latitude, position->longitude,
                                                                machine.latitude, machine.longitude))
                   : machine.city.value_or(""),
          wallet::machineStateName(machine)}) {
        if (!part.empty()) text += (text.empty() ? "" : " · ") + part;
    }
    return wallet::capitalized(text);
}

}  // namespace

MachinesTab::MachinesTab(Shell& owner) : Page(owner, tr("Machines"), "machines") {
    on(widget("search"), "activate", [this] { searchText(); });
    on(widget("search"), "search-changed", [this] {
        if (textOf("search").empty()) searchText();
    });
    on(widget("openPicture"), "clicked", [this] { openPicture(); });
    on(widget("pastePicture"), "clicked", [this] { pastePicture(); });
    on(widget("near"), "clicked", [this] { searchHere(); });
    on(widget("scan"), "clicked", [this] { mCamera ? stopScanning() : scan(); });
    setVisible("scanChild", device::Camera::isThere());
    device::whenPositionIsThere([this, weak = alive()] {
        if (!weak.expired()) setVisible("nearChild", true);
    });
    addPictures();
}

/// A picture may be dropped anywhere on the page, and pasted from the keyboard.
void MachinesTab::addPictures() {
    auto* const drop = gtk_drop_target_new(G_TYPE_FILE, GDK_ACTION_COPY);
    g_signal_connect(drop, "drop", G_CALLBACK(+[](GtkDropTarget*, GValue* value, double, double, gpointer self) {
                         char* const path = g_file_get_path(G_FILE(g_value_get_object(value)));
                         const std::filesystem::path file{path == nullptr ? "" : path};
                         g_free(path);
                         static_cast<MachinesTab*>(self)->searchPicture(file, file.filename().string());
                         return TRUE;
                     }),
                     this);
    gtk_widget_add_controller(root(), GTK_EVENT_CONTROLLER(drop));
    auto* const keys = gtk_shortcut_controller_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);  // before the entry, which takes only text
    gtk_shortcut_controller_add_shortcut(
        GTK_SHORTCUT_CONTROLLER(keys),
        gtk_shortcut_new(gtk_keyval_trigger_new(GDK_KEY_v, GDK_CONTROL_MASK),
                         gtk_callback_action_new(
                             [](GtkWidget* page, GVariant*, gpointer self) -> gboolean {
                                 auto* const formats = gdk_clipboard_get_formats(gtk_widget_get_clipboard(page));
                                 const auto isPicture = gdk_content_formats_contain_gtype(formats, GDK_TYPE_TEXTURE);
                                 if (isPicture != FALSE) static_cast<MachinesTab*>(self)->pastePicture();
                                 return isPicture;
                             },
                             this, nullptr)));
    gtk_widget_add_controller(root(), keys);
}

void MachinesTab::begin(Search search) {
    window.sayNothing();
    mSearch = std::move(search);
    if (mSearch.isForOne) setText("search", mSearch.code);  // clearing it leads back to the person's own
    keep(this->search());
}

void MachinesTab::searchText() {
    const auto text = textOf("search");
    const auto position = positionIn(text);
    begin({position ? "" : text, position});
}

/// Null for the person's own.
std::shared_ptr<const MachineFilter> MachinesTab::filter() const {
    const auto& [code, position, isForOne] = mSearch;
    if (position) {
        return std::make_shared<const MachineFilter>(
            MachineFilter{.latitude = position->latitude, .longitude = position->longitude});
    }
    return code.empty() ? nullptr : std::make_shared<const MachineFilter>(MachineFilter{.value = code});
}

std::string MachinesTab::heading() const {
    if (mSearch.position) return tr("Machines nearby");
    return mSearch.code.empty() ? tr("Your machines") : tr("Machines found");
}

Task MachinesTab::search() {
    auto& kavio = freeKavio();
    const Busy busy{window};
    const auto outcome = co_await kavio.getMachines(filter());
    if (outcome.result->cause == Cause::INVALID_INPUT) {
        co_return window.say(
            tr("That is neither a machine’s code, nor the text of a QR code, nor a position such as 52.52, 13.41."));
    }
    if (!outcome) co_return window.fail(*outcome.result, [this] { keep(search()); });
    adw_preferences_group_set_title(widget<AdwPreferencesGroup>("group"), heading().c_str());
    show(outcome.payload.value_or(Machines{}));
}

void MachinesTab::show(const Machines& machines) {
    auto* const list = widget<GtkListBox>("list");
    clear(list);
    gtk_widget_set_visible(GTK_WIDGET(list), !machines.empty());
    for (const auto& machine : machines) {
        auto* const row = makeRow(wallet::titleOf(*machine), subtitleOf(*machine, mSearch.position));
        adw_action_row_add_suffix(ADW_ACTION_ROW(row), gtk_image_new_from_icon_name("go-next-symbolic"));
        gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), TRUE);
        on(row, "activated", [this, machine] { window.push(std::make_unique<MachinePage>(window, machine)); });
        gtk_list_box_append(list, row);
    }
    if (std::exchange(mSearch.isForOne, false) && machines.size() == 1)
        window.push(std::make_unique<MachinePage>(window, machines.front()));
}

/// A large picture takes a while to read.
void MachinesTab::searchPicture(const std::filesystem::path& file, const std::string& name, bool isTemporary) {
    std::thread([this, weak = alive(), file, name, isTemporary, queue = Platform::current().mainQueue] {
        std::string code;
        std::string problem;
        try {
            code = wallet::textOfQrCode(file, name);
        } catch (const std::exception& why) {  // a picture that is too large for the memory, too
            problem = why.what();
        }
        std::error_code ignored;
        if (isTemporary) std::filesystem::remove(file, ignored);
        queue->post([this, weak, code, problem] {
            if (weak.expired()) return;
            problem.empty() ? begin({.code = code, .isForOne = true}) : window.say(problem);
        });
    }).detach();
}

void MachinesTab::openPicture() {
    auto* const chooser = gtk_file_chooser_native_new(tr("A picture of a machine’s QR code").c_str(), window.handle(),
                                                      GTK_FILE_CHOOSER_ACTION_OPEN, nullptr, nullptr);
    on(chooser, "response", [this, chooser] {
        const Ref<GFile> file{gtk_file_chooser_get_file(GTK_FILE_CHOOSER(chooser))};
        char* const path = file ? g_file_get_path(file.get()) : nullptr;
        if (path != nullptr) searchPicture(path, std::filesystem::path(path).filename().string());
        g_free(path);
        g_object_unref(chooser);
    });
    gtk_native_dialog_set_modal(GTK_NATIVE_DIALOG(chooser), TRUE);
    gtk_native_dialog_show(GTK_NATIVE_DIALOG(chooser));
}

void MachinesTab::pastePicture() {
    struct Asked {
        MachinesTab* tab;
        std::weak_ptr<void> alive;
    };
    gdk_clipboard_read_texture_async(
        gtk_widget_get_clipboard(root()), nullptr,
        [](GObject* clipboard, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Asked> asked{static_cast<Asked*>(data)};
            const Ref<GdkTexture> picture{gdk_clipboard_read_texture_finish(GDK_CLIPBOARD(clipboard), result, nullptr)};
            if (asked->alive.expired()) return;
            char* file = nullptr;
            const int opened = picture ? g_file_open_tmp("kavio-XXXXXX.png", &file, nullptr) : -1;
            if (opened >= 0) {
                g_close(opened, nullptr);
                gdk_texture_save_to_png(picture.get(), file);
                asked->tab->searchPicture(file, tr("clipboard"), true);
            } else {
                asked->tab->window.say(tr("There is no picture to paste: copy one with a machine’s QR code first."));
            }
            g_free(file);
        },
        new Asked{this, alive()});
}

void MachinesTab::searchHere() {
    window.setBusy(+1);
    device::askPosition(
        [this, weak = alive()](const std::optional<device::Position>& position, const std::string& problem) {
            if (weak.expired()) return;
            window.setBusy(-1);
            position ? begin({.position = position}) : window.say(problem);
        });
}

void MachinesTab::scan() {
    mCamera = std::make_unique<device::Camera>(
        [this](GdkPaintable* frame) { gtk_picture_set_paintable(widget<GtkPicture>("camera"), frame); },
        [this](const std::string& text) {
            stopScanning();
            begin({.code = text, .isForOne = true});
        },
        [this](const std::string& problem) {
            stopScanning();
            window.say(problem);
        });
    setVisible("camera", true);
}

void MachinesTab::stopScanning() {
    setVisible("camera", false);
    gtk_picture_set_paintable(widget<GtkPicture>("camera"), nullptr);
    mCamera.reset();
}

}  // namespace kavio::wallet_gtk
