#pragma once

#include <kavio/export.h>
#include <kavio/testing/network.h>
#include <kavio/testing/timeline.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kavio::test {

/// Whose phone the device is. The service knows everybody: a person has a wallet of 50.00, two cards and two prepaid
/// cards. The currency follows the country.
struct Person {
    ///@{
    /// As `Kavio::login` and `Kavio::verify` take them.
    std::string countryCode = "49";
    std::string phoneNumber = "151234567";
    std::string country = "DE";
    ///@}
};

/// A purchase or a deposit, as the service has it.
struct ServiceOrder {
    std::string id;            ///< as in `Order`
    std::string status;        ///< the service's own word, such as "completed"
    std::int64_t amount = 0;   ///< smallest currency unit
    std::int64_t machine = 0;  ///< its Kavio ID; 0 for a deposit
    bool operator==(const ServiceOrder&) const = default;
};

/// What goes wrong at the service with a request.
struct ServiceFault {
    /// Below "/v1", such as "/machines/*/orders"; "*" stands for any text.
    std::string path;
    /// Only requests of this method; empty for all.
    std::string method{};
    ///@{
    /// Absent for what the service answers.
    std::optional<int> status{};
    std::optional<std::string> body{};
    ///@}
    /// How much later the reply comes.
    std::chrono::milliseconds delay{0};
    /// The reply is lost with its connection.
    bool isLost = false;
    /// Whether the request takes effect nevertheless.
    bool takesEffect = false;
    /// How many requests it concerns; negative for all.
    int times = 1;
};

/// The payment service of a device in a box: the sandbox's, in this process and without sockets. It checks signatures,
/// sessions and parameters, and its orders move on with the device's time. The test cards and machines are those of
/// docs/sandbox.md; the one-time code is "123456", the code on a challenge page "1234".
class KAVIO_API Service {
public:
    /// What can differ from one service to the next.
    struct Options {
        /// How long an order stays in each status.
        std::chrono::milliseconds orderStep{1000};
        /// Where the texts come from that nobody can guess, such as session tokens.
        std::function<std::string()> unguessableText;
    };
    /// It takes the time from `timeline`.
    Service(std::shared_ptr<const Timeline> timeline, Options options);
    ~Service();
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// What the service makes of a request, which takes effect at once.
    Handled handle(const UrlRequest& request);
    /// Sends a form of an issuer's page; where the answer leads. Absent if it leads nowhere.
    std::optional<std::string> submit(const std::string& page, const std::map<std::string, std::string>& fields);

    /// Adds a fault for the requests to come.
    void add(ServiceFault fault);
    /// Takes back all faults.
    void clearFaults();
    /// Shifts the service's clock from the device's, as far as clients see it.
    void setClockOffset(std::chrono::seconds offset);
    /// Refuses every session so far.
    void endSessions();

    /// The purchases and deposits of a person, oldest first, without those that the service knew from the start.
    std::vector<ServiceOrder> orders(const Person& person = {}) const;
    /// The wallet, in the smallest currency unit; absent before the person has logged in.
    std::optional<std::int64_t> balance(const Person& person = {}) const;
    /// The labels of the stored cards, such as "•••• 1111".
    std::vector<std::string> cards(const Person& person = {}) const;
    /// "METHOD PATH" of each request so far, without the query.
    std::vector<std::string> requests() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

}  // namespace kavio::test
