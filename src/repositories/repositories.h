#pragma once

#include "models/account_model.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "models/payment_model.h"
#include "models/product_model.h"
#include "models/request_models.h"
#include "models/td_secure_replies.h"
#include "network/api_result.h"
#include "network/requests.h"
#include "network/send_with_fresh_time.h"

#include <kavio/delegate.h>
#include <kavio/unsettled_payment.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// The facade's ways to the service: one repository per area of the API, one of each in the process (`sharedInstance`).
/// An operation makes a request and sends it. Operations may be called from any thread; completions run once, on the
/// main thread. A separate service under each repository would add nothing, so it is the same class.
namespace kavio {

/// These go straight to the transport: they are the first requests of a fresh install, and their signature is accepted
/// without the server's time. If it is not, because the device's clock is wrong (417), they ask for the time first,
/// until that has succeeded once.
class LoginRepository {
public:
    void challenge(std::string countryCode, std::string phoneNumber, std::string challenge, std::string retry,
                   Completion<Challenge> completion) const;
    /// The session that a reply opens is stored before `completion` runs.
    void verify(std::string verifyCode, std::string countryIsoCode, std::string countryPhoneCode,
                std::string phoneNumber, std::string challenge, std::string retry, Completion<Token> completion) const;

private:
    template <class T>
    void send(APIRequest request, Completion<T> completion, Recorder<T> record) const;

    // Shared with replies, which may come after this is gone.
    const std::shared_ptr<std::atomic<bool>> mIsClockWrong = std::make_shared<std::atomic<bool>>(false);
};
using LoginService = LoginRepository;

class AccountRepository {
public:
    /// An account that arrives is stored before `completion` runs.
    void account(const std::optional<std::string>& appVersion, Completion<AccountModel> completion) const;
    /// Success empties the stored session token and clears the time sample's expiry before `completion` runs.
    void logout(Completion<LogOutResponse> completion) const;
};
using AccountService = AccountRepository;

/// Machine look-ups, by filter values or by the text of a scanned code.
class MachineRepository : public std::enable_shared_from_this<MachineRepository> {
public:
    void machines(const MachineQuery& query, Completion<Machines> completion);
    /// Looks up the machine that a machine number, QR or NFC text or terminal label names. False, and `completion` is
    /// never called, when the text is none of these.
    bool machinesByCode(const std::string& text, std::int64_t limit, std::optional<std::int64_t> operatorId,
                        Completion<Machines> completion);
    void products(std::uint64_t machineId, Completion<Products> completion) const;

    /// The last look-up of a single machine, and what it found first; null for nothing.
    std::optional<MachineByValueModel> lastMachineRequest() const;
    std::shared_ptr<const Machine> lastMachineResponse() const;

private:
    mutable std::mutex mMutex;  // guards the two below: look-ups may start on any thread
    std::optional<MachineByValueModel> mLastMachineRequest;
    std::shared_ptr<const Machine> mLastMachineResponse;
};
using MachineService = MachineRepository;

/// Sends a deposit that is written down as `payment`.
void sendDeposit(APIRequest request, UnsettledPayment payment, Completion<DepositModel> completion);

class PurchaseRepository {
public:
    /// Sent in the background: it waits for connectivity and is sent at most once. It is written down as `payment`.
    std::shared_ptr<Sending> purchase(Parameters params, UnsettledPayment payment,
                                      Completion<OrderModel> completion) const;
    /// A reply about another order is not understood.
    void order(const std::string& orderId, bool statusOnly, Completion<OrderModel> completion) const;
};
using PurchaseService = PurchaseRepository;

class PaymentMethodRepository {
public:
    void addCard(const std::map<std::string, SecretText>& paymentCard, std::string uuidKey,
                 Completion<AddCreditCardResponse> completion) const;
    void removeCard(const std::string& tokenLocator, Completion<DeleteCreditResponse> completion) const;
    void deposit(const Deposit& deposit, UnsettledPayment payment, Completion<DepositModel> completion) const;
    void addCardTDSecure(const TDSAddCard& body, Completion<TDSAddCardResponseFactory> completion) const;
    void getCardTDSecure(const TDSGetCard& body, Completion<TDSGetCardResponseFactory> completion) const;
    /// The text of the issuer's page at `url`.
    void pageTDSecure(const TDSGetPage& body, std::string url, Completion<std::string> completion) const;
};
using PaymentMethodService = PaymentMethodRepository;

class PrepaidRepository {
public:
    void prepaidCards(Completion<PrepaidsList> completion) const;
    void deposit(const std::string& prepaidId, const Deposit& deposit, UnsettledPayment payment,
                 Completion<DepositModel> completion) const;
};
using PrepaidService = PrepaidRepository;

class ActivitiesRepository {
public:
    void activities(Parameters params, Completion<Orders> completion) const;
    /// The same, but as the reply has them.
    void activityModels(Parameters params, Completion<std::vector<OrderActivityModel>> completion) const;
};
using ActivitiesService = ActivitiesRepository;

}  // namespace kavio
