#include "exchanges.h"

#include "models/json/document.h"
#include "models/machine_model.h"
#include "network/kavio_network_service.h"
#include "network/requests.h"
#include "platform/linux/tls_profile.h"
#include "repositories/repositories.h"
#include "storage/kavio_user_defaults.h"

#include <kavio/kavio.h>
#include <kavio/platform/linux.h>

#include <future>
#include <optional>
#include <stdexcept>
#include <utility>

namespace kavio::bench {
namespace {

constexpr MachineQuery query{.kavioMachineId = 42100107};

std::shared_ptr<RunLoop> mainQueue() {
    static const auto queue = std::make_shared<RunLoop>();
    return queue;
}

/// Sends, and runs the main queue until the result is there: every request ends by itself.
template <class T, class Send>
T resultOf(Send send) {
    std::optional<APIResult<T>> result;
    send([&result](APIResult<T> reported) {
        result = std::move(reported);
        mainQueue()->stop();
    });
    mainQueue()->run();
    if (!*result) throw std::runtime_error("The service refused a request.");
    return *(*std::move(result)).payload();
}

std::size_t append(char* data, std::size_t size, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(data, size * count);
    return size * count;
}

UrlConduct conduct(const Setup& setup) {
    UrlConduct made({{}, setup.address}, false);
    made.authorityFile.clear();
    made.authorityFolder = setup.authorities();
    return made;
}

}  // namespace

void openSession(const Setup& setup) {
    LinuxPlatformOptions options;
    options.session = {setup.authority(), setup.address};
    options.storeDirectory = setup.folder / "store";
    options.mainQueue = mainQueue();
    Platform::install(makeLinuxPlatform(std::move(options)));

    const LoginRepository service;
    const auto challenge = resultOf<Challenge>(
        [&](Completion<Challenge> done) { service.challenge("49", "151234567", "", "", std::move(done)); });
    const auto token = resultOf<Token>([&](Completion<Token> done) {
        service.verify("123456", "DE", "49", "151234567", challenge.challenge, challenge.retryTimeoutSeconds,
                       std::move(done));
    });
    KavioUserDefaults::shared()->defualt->set(keys::sessionToken, token.token);
    if (lookUpMachine().size() != 1) throw std::runtime_error("The service does not know the machine.");
}

APIRequest machineRequest() { return machineByValueRequest(query); }

UrlRequest preparedRequest() {
    auto request = machineRequest();
    return KavioNetworkService::prepare(request);
}

Machines lookUpMachine() {
    return resultOf<Machines>([](auto done) { MachineRepository().machines(query, std::move(done)); });
}

void lookUpMachines(std::size_t facades) {
    struct Counter final : QuietDelegate {
        void onGetMachines(Result result, std::optional<Machines>) override {
            if (result->type == ResultType::SUCCESS) ++answered;
        }
        std::size_t answered = 0;
    };
    const auto counter = std::make_shared<Counter>();
    std::vector<std::unique_ptr<Kavio>> asking;
    for (std::size_t i = 0; i < facades; ++i) {
        asking.push_back(std::make_unique<Kavio>(counter, "key", Kavio::EnvironmentType::PROD));
        asking.back()->getMachines(std::make_shared<MachineFilter>(MachineFilter{.value = "42100107"}));
    }
    mainQueue()->runUntil([&] { return counter->answered == facades; }, std::chrono::seconds(30));
    if (counter->answered != facades) throw std::runtime_error("Some of the calls at once have failed.");
}

BareExchange::BareExchange(const Setup& setup, UrlRequest request) : mAuthority(setup.authority()) {
    mConnectTo.append(("::" + setup.address).c_str());
    makeHandle(std::move(request));
}

void BareExchange::makeHandle(UrlRequest request) {
    mRequest = std::move(request);
    mHeaders = {};
    for (const auto& [name, value] : mRequest.headers)
        mHeaders.append(std::string(name).append(": ").append(value).c_str());
    mEasy.reset(curl_easy_init());
    CURL* const easy = mEasy.get();
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, &applyTlsProfile);
    curl_easy_setopt(easy, CURLOPT_CAPATH, static_cast<char*>(nullptr));
    curl_easy_setopt(easy, CURLOPT_CAINFO, mAuthority.c_str());
    curl_easy_setopt(easy, CURLOPT_CONNECT_TO, mConnectTo.get());
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, 16L * 1024);  // as ours: the default costs trips to the system
    curl_easy_setopt(easy, CURLOPT_URL, mRequest.url.c_str());
    curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, mRequest.method.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, mHeaders.get());
    if (mRequest.body) {
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(mRequest.body->size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, mRequest.body->c_str());
    }
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &mBody);
}

long BareExchange::run(UrlRequest request) {
    makeHandle(std::move(request));
    return run();
}

long BareExchange::run() {
    CURL* const easy = mEasy.get();
    mBody.clear();
    curl_multi_add_handle(mMulti.get(), easy);
    for (int running = 1; running > 0;) {
        curl_multi_perform(mMulti.get(), &running);
        if (running > 0) curl_multi_poll(mMulti.get(), nullptr, 0, 1000, nullptr);
    }
    curl_multi_remove_handle(mMulti.get(), easy);
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    return status;
}

long ThreadedBareExchange::run() {
    long status = 0;
    std::promise<Machines> machines;
    mThread->async([&] {
        status = mExchange.run(preparedRequest());
        machines.set_value(*decodeDocument<Machines>(mExchange.body()));
    });
    return machines.get_future().get().empty() ? 0 : status;
}

LibraryExchange::LibraryExchange(const Setup& setup) : mEngine(conduct(setup)) {}

long LibraryExchange::run(const UrlRequest& request) {
    std::promise<long> status;
    mEngine.submit(request, [&status](const UrlOutcome& outcome) {
        const auto* reply = std::get_if<UrlReply>(&outcome);
        status.set_value(reply != nullptr ? reply->status : 0);
    });
    return status.get_future().get();
}

}  // namespace kavio::bench
