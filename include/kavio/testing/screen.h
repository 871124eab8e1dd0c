#pragma once

#include <kavio/export.h>
#include <kavio/platform/ui.h>
#include <kavio/testing/deed.h>
#include <kavio/testing/timeline.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::test {

/// The screen of a device in a box: one window of the application, with a dialog of its own on top. What the library
/// shows there is recorded as a list of short texts. Pages do what the test says, or what is found at their address.
class KAVIO_API Screen final : public Windows, public std::enable_shared_from_this<Screen> {
public:
    /// With a timeline, pages act by themselves as it runs; without, only when `step` is called.
    explicit Screen(std::shared_ptr<Timeline> timeline = nullptr);
    ~Screen() override;

    std::shared_ptr<Window> keyWindow() const override;
    std::shared_ptr<TDSecureScene> makeScene() override;
    std::shared_ptr<TDSecureScene> prepareScene() override;

    /// Whether the person is using a window of the application.
    bool hasKeyWindow = true;
    /// What goes wrong where a scene is presented.
    std::function<void()> onPresent;
    /// What the pages do, by their address or document.
    std::map<std::string, std::vector<Deed>> pages;
    /// What any other page does; absent when there is nothing at that address. Unset where there are no others.
    std::function<std::optional<std::vector<Deed>>(const std::string& content, bool isAddress)> browse;
    /// "present", "hidden", "shown", "html DOCUMENT", "load URL SECONDS", "dismiss", each with "animated" if that was
    /// asked for.
    std::vector<std::string> log;

    /// Whether a scene is on the screen.
    bool hasScene() const;
    /// What has become of the scene that was prepared last: "waiting", "presented"; "gone" when there is none.
    std::string preparedScene() const;
    /// The address or document of the page that is there; empty if there is none.
    std::string content() const;
    /// What the top-most scene shows: "working", "page", "failed"; "nothing" when there is none.
    std::string shown() const;
    /// Makes the page that the top-most scene shows navigate there; false if nobody is told.
    bool navigate(const std::optional<std::string>& url);
    /// The button that closes the top-most scene.
    void pressClose();
    /// The button that a page which has failed leaves to the person.
    void pressBack();
    /// The process that runs the page ends, as in a crash.
    void endPageProcess();
    /// Nothing is shown any more, and nobody is told, as when the program is killed.
    void forget();
    /// Lets the page of each scene do the next thing.
    void step();

private:
    class PageView;
    class Scene;
    void note(std::string_view what, std::string_view more = "");
    Scene* top() const;

    const std::shared_ptr<Timeline> mTimeline;
    std::vector<Scene*> mPresented;  // each above the one before
    std::weak_ptr<Scene> mPrepared;  // the last one
};

}  // namespace kavio::test
