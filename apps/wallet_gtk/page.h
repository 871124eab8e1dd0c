#pragma once

#include "signals.h"

#include <kavio/async.h>

#include <adwaita.h>

#include <memory>
#include <optional>
#include <string>

namespace kavio::wallet_gtk {

class Shell;

/// The objects of a file in the folder "ui".
Ref<GtkBuilder> loadUi(const char* file);

/// What is shown, and what a person can do there. Each has a wallet of its own, so that none waits for another. It may
/// go at any time, which ends what it is doing.
class Page {
public:
    virtual ~Page() = default;
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// All of it; what it is called stands above it.
    GtkWidget* root() const { return widget("page"); }
    const std::string title;
    /// The person looks at it now.
    virtual void onShown() {}
    /// A payment has ended while the person looks at it.
    virtual void onPaid() {}

protected:
    Page(Shell& owner, std::string name, const char* file);

    template <class T = GtkWidget>
    T* widget(const char* id) const {
        return reinterpret_cast<T*>(gtk_builder_get_object(mBuilder.get(), id));
    }
    std::string textOf(const char* entry) const { return gtk_editable_get_text(widget<GtkEditable>(entry)); }
    void setText(const char* entry, const std::string& text) const {
        gtk_editable_set_text(widget<GtkEditable>(entry), text.c_str());
    }
    void setVisible(const char* id, bool isVisible) const { gtk_widget_set_visible(widget(id), isVisible); }

    /// As soon as whatever is being done now is over, and the widget can be used again.
    void focus(const char* id) const;

    AsyncKavio& kavio() { return *mKavio; }
    /// A wallet that is not busy: whatever is under way is given up.
    AsyncKavio& freeKavio();
    /// Keeps what is being done. Never from within what this keeps already.
    void keep(Task task) { mTask.emplace(std::move(task)); }
    /// Empty once the page is gone, for work that returns late.
    std::weak_ptr<void> alive() const { return mAlive; }

    Shell& window;

private:
    const Ref<GtkBuilder> mBuilder;
    const std::shared_ptr<void> mAlive = std::make_shared<char>();
    std::unique_ptr<AsyncKavio> mKavio;
    std::optional<Task> mTask;  // last: it goes before what it uses
};

/// While it lives, the window shows that something is under way, and these widgets cannot be used.
class Busy {
public:
    explicit Busy(Shell& window, GtkWidget* controls = nullptr);
    ~Busy();
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    Shell& mWindow;
    const Ref<GtkWidget> mControls;
    const Ref<GtkWidget> mFocus;  // which a widget loses with its use
};

/// Removes all rows.
void clear(GtkListBox* list);
/// A row with a title and a smaller line below it, none of which is markup.
GtkWidget* makeRow(const std::string& title, const std::string& subtitle);
/// Marks an entry whose text is wrong, or takes the mark away.
void markWrong(GtkWidget* entry, bool isWrong);

}  // namespace kavio::wallet_gtk
