// kavio-wallet-gtk: a wallet with windows, built only on the public API and Kavio::gtk.

#include "command_line/service_options.h"
#include "command_line/start.h"
#include "command_line/translation.h"
#include "driver/options.h"
#include "main_window.h"
#include "wording/language.h"
#include "wording/text.h"

#include <kavio/gtk.h>

#include <adwaita.h>

#include <cstdlib>

namespace kavio::wallet_gtk {

namespace {

constexpr const char* applicationId = "example.kavio.Wallet";

/// What a person may choose.
struct CommandLine : driver::Options {
    CLI::App program{tr("Pay at unattended vending points."), "kavio-wallet-gtk"};

    CommandLine() {
        program.set_version_flag("-V,--version", KAVIO_WALLET_VERSION, tr("Show the program's version and exit"));
        command_line::addServiceOptions(program, *this);
    }

    /// The wallet of a service of one's own has nothing to do with other windows.
    bool isForItself() const { return !storeDirectory.empty() || !connectTo.empty(); }
};

void complain(std::string_view sentence) { g_printerr("kavio-wallet-gtk: %s\n", wallet::printable(sentence).c_str()); }

int run(const CommandLine& line) {
    gtk_disable_setlocale();  // the language is chosen already, and the rest is to stay as programs write it
    if (gtk_init_check() == FALSE) throw std::runtime_error(tr("there is no display"));
    const Ref<AdwApplication> application{adw_application_new(
        applicationId, line.isForItself() ? G_APPLICATION_NON_UNIQUE : G_APPLICATION_DEFAULT_FLAGS)};
    std::unique_ptr<MainWindow> window;
    on(application.get(), "startup", [&] {
        auto device = driver::deviceOptions(line, nullptr);
        device.information.emplace("CFBundleIdentifier", std::string("kavio-wallet-gtk"));
        Platform::install(makeGtkPlatform(GTK_APPLICATION(application.get()), std::move(device)));
        gtk_window_set_default_icon_name(applicationId);
    });
    on(application.get(), "activate", [&] {  // again, if the program is started once more
        if (!window)
            window = std::make_unique<MainWindow>(GTK_APPLICATION(application.get()),
                                                  Service{line.apiKey, line.environment});
        window->present();
    });
    return g_application_run(G_APPLICATION(application.get()), 0, nullptr);
}

}  // namespace

}  // namespace kavio::wallet_gtk

int main(int argc, char** argv) {
    using namespace kavio::wallet_gtk;
    kavio::wallet::speakOwnLanguage();
    return kavio::command_line::start(
        [&] {
            CommandLine line;
            if (!kavio::command_line::parse(line.program, argc, argv)) return EXIT_SUCCESS;
            return run(line);
        },
        complain);
}
