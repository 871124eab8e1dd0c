#pragma once

#include "gtk/gtk_world.h"
#include "sandbox/sandbox.h"
#include "support/recording_delegate.h"
#include "util/shared_instance.h"

#include <kavio/kavio.h>

#include <memory>
#include <string>
#include <vector>

namespace kavio::test {

struct Service {
    sandbox::Sandbox sandbox;
};

/// An application with a person signed in, against the sandbox over TLS.
class EnrolmentWorld : protected Service, public GtkHost {
protected:
    EnrolmentWorld() : GtkHost({sandbox.authorityFile(), sandbox.address()}) {
        forgetSharedInstances();
        kavio = std::make_unique<Kavio>(delegate, "key", Kavio::EnvironmentType::TEST);
        kavio->login("49", "15000");
        EXPECT_TRUE(until([this] { return reports().size() == 1; }));
        kavio->verify("123456", "DE", "49", "15000");
        EXPECT_TRUE(until([this] { return reports().size() == 2; }));
        reports().clear();
    }
    ~EnrolmentWorld() override {
        kavio.reset();
        forgetSharedInstances();
    }

    std::vector<Report>& reports() { return delegate->reports; }
    void enrol(const std::string& number) {
        kavio->addCreditCardTDSecure({.number = number, .month = 1, .year = 2039, .securityCode = 7},
                                     {.name = "Robin", .email = "robin@kavio.example"});
    }
    void enrolWith(const std::string& page) {
        server.servePage("/page", page);
        sandbox.fault("/account/locators/credorax/addCard",
                      {.status = 200, .body = R"({"type":3,"id":"I","url":")" + server.url("/page") + "\"}"});
        enrol("4000000000001042");
    }
    void waitFor(std::size_t count) {
        EXPECT_TRUE(until([=, this] { return reports().size() >= count; })) << shown();
    }
    void close(bool byKey) { byKey ? press("Escape") : click("close"); }
    std::string lastPath() { return sandbox.requests().back().target; }

    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::unique_ptr<Kavio> kavio;
};

}  // namespace kavio::test
