#pragma once

#include "gtk/gtk_world.h"
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
    void enrol(const std::string& number) {
        kavio->addCreditCardTDSecure({.number = number, .month = 1, .year = 2039, .securityCode = 7},
                                     {.name = "Robin", .email = "robin@kavio.example"});
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
    inline static const Report canceled{"onAddCreditCard", ResultType::FAILURE, "canceled by user"};
    static Report serverError(const std::string& message) {
        return {"onAddCreditCard", ResultType::SERVER_ERROR, message};
    }
};

}  // namespace kavio::test
