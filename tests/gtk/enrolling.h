#pragma once

#include "gtk/gtk_world.h"
#include "sandbox/gallery.h"
#include "sandbox/sandbox.h"
#include "util/shared_instance.h"

#include <kavio/kavio.h>
#include <kavio/testing/recording_delegate.h>

#include <memory>
#include <string>
#include <vector>

namespace kavio::test {

struct WithSandbox {
    sandbox::Sandbox sandbox;
};

/// An application with a person signed in, against the sandbox over TLS.
class Enrolling : protected WithSandbox, public GtkHost {
protected:
    Enrolling() : GtkHost({sandbox.authorityFile(), sandbox.address()}) {
        forgetSharedInstances();
        kavio = std::make_unique<Kavio>(delegate, "key", Kavio::EnvironmentType::TEST);
        kavio->login("49", "15000");
        EXPECT_TRUE(until([this] { return reports().size() == 1; }));
        kavio->verify("123456", "DE", "49", "15000");
        EXPECT_TRUE(until([this] { return reports().size() == 2; }));
        reports().clear();
    }
    ~Enrolling() override {
        kavio.reset();
        forgetSharedInstances();
    }

    std::vector<Report>& reports() { return delegate->reports; }
    void enrol(const std::string& number) { enrol(*kavio, number); }
    static void enrol(Kavio& facade, const std::string& number) {
        facade.addCreditCardTDSecure({.number = number, .month = 1, .year = 2039, .securityCode = 7},
                                     {.name = "Robin", .email = "robin@kavio.example"});
    }
    /// Does what a page of the gallery needs a person for, until `isOver`; false if that takes too long.
    static bool leaveToEnd(sandbox::Person person, const std::function<bool()>& isOver) {
        for (int looks = 40; looks > 0; --looks) {
            if (until(isOver, std::chrono::milliseconds(500))) return true;
            actAs(person);
        }
        return false;
    }
    /// Waits for the next report.
    void expect(const Report& report) {
        expected.push_back(report);
        EXPECT_TRUE(until([this] { return reports().size() >= expected.size(); })) << shown();
        EXPECT_EQ(reports(), expected);
    }

    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<Kavio> kavio;
    std::vector<Report> expected;  // until now

    inline static const Report success{"onAddCreditCard", ResultType::SUCCESS};
    inline static const Report takenAway{"onAddCreditCard", ResultType::FAILURE};  // by another facade's page
    inline static const Report canceled{"onAddCreditCard", ResultType::FAILURE, "canceled by user"};
    static Report serverError(const std::string& message) {
        return {"onAddCreditCard", ResultType::SERVER_ERROR, message};
    }
    static Report reportOf(const sandbox::GalleryPage& page) {
        if (page.person == sandbox::Person::close) return canceled;
        return page.refusal.empty() ? success : serverError("error: " + std::string(page.refusal));
    }

private:
    static void actAs(sandbox::Person person) {
        const auto seen = shown();
        switch (person) {
            case sandbox::Person::nothing:
                return;
            case sandbox::Person::pressEnter:
                if (seen == "page") press("Return");
                return;
            case sandbox::Person::tryAgain:
                if (seen == "failed") click("back");
                return;
            case sandbox::Person::close:
                if (seen == "page" || seen == "failed") press("Escape");
        }
    }
};

}  // namespace kavio::test
