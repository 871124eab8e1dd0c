#include "issuer.h"

#include "pages.h"
#include "service.h"

#include <fmt/format.h>
#include <openssl/evp.h>

namespace kavio::sandbox {
namespace {

constexpr const char* issuerHost = "acs.kavio.example";
constexpr const char* answer = "1234";
constexpr std::chrono::seconds slowness{3};

struct PageRequest {
    World& world;
    const httplib::Request& request;
    Enrolment& enrolment;
};

Reply htmlReply(std::string html, int status = 200) {
    return {.status = status, .body = std::move(html), .type = "text/html; charset=utf-8"};
}

/// Ends a page: returns the address of its last navigation.
std::string endOf(Enrolment& enrolment, std::string_view result, std::string_view description) {
    enrolment.ended = true;
    enrolment.result = result;
    enrolment.description = description;
    const httplib::Params items{
        {"g1", enrolment.token}, {"z2", enrolment.result}, {"z3", enrolment.description}, {"z50", enrolment.id}};
    return httplib::append_query_params("http://127.0.0.1/", items);
}

Reply redirectTo(const std::string& url) {
    auto reply = htmlReply("", 302);
    reply.headers["Location"] = url;
    return reply;
}

std::string base64Decoded(const std::string& text) {
    std::string bytes(text.size() / 4 * 3, '\0');
    const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                                       reinterpret_cast<const unsigned char*>(text.data()), int(text.size()));
    if (length < 0) return {};
    // The decoder counts the padding as bytes.
    bytes.resize(std::size_t(length) - std::min<std::size_t>(text.size() - text.find_last_not_of('=') - 1, 2));
    return bytes;
}

/// The value of the query's only item. A "+" in it stays a plus, because base64 has no spaces.
std::string methodData(const httplib::Request& request) {
    constexpr std::string_view start = "?threeDSMethodData=";
    const auto at = request.target.find(start);
    if (at == std::string::npos) throw Refusal(400, "threeDSMethodData is missing");
    auto value = request.target.substr(at + start.size());
    for (const auto& [escape, character] : {std::pair("%3D", "="), {"%2B", "+"}, {"%2F", "/"}})
        for (auto found = value.find(escape); found != std::string::npos; found = value.find(escape))
            value.replace(found, 3, character);
    return value;
}

void checkFingerprintRequest(const PageRequest& page) {
    const auto& request = page.request;
    const auto expectHeader = [&](const char* name, std::string_view value) {
        if (request.get_header_value(name) != value)
            throw Refusal(400, fmt::format("{} must be {}", name, value.empty() ? "absent" : value));
    };
    expectHeader("Host", issuerHost);
    expectHeader("Content-Type", "application/x-www-form-urlencoded");
    expectHeader("Cache-Control", "no-cache");
    expectHeader("X-Zelto-Wallet-Api-Key", "");
    expectHeader("X-Zelto-Wallet-Session-Token", "");
    requireSignature(request, page.world);
    if (!request.body.empty()) throw Refusal(400, "this request must not have a body");
    const nlohmann::json expected{{"threeDSMethodNotificationURL", "http://127.0.0.1"},
                                  {"threeDSServerTransID", page.enrolment.id}};
    if (nlohmann::json::parse(base64Decoded(methodData(request)), nullptr, false) != expected)
        throw Refusal(400, "threeDSMethodData does not belong to this transaction");
}

Reply fingerprint(const PageRequest& page) {
    if (page.request.method != "POST") throw Refusal(405, "only POST is allowed here");
    checkFingerprintRequest(page);
    return htmlReply(fingerprintHtml(endOf(page.enrolment, pageSucceeded, "Device recognised")));
}

Reply challengeForm(const Enrolment& enrolment, const std::string& hint) {
    const auto last = enrolment.card.number.substr(enrolment.card.number.size() - 4);
    const bool answersItself = enrolment.course == Course::challengeAnswersItself;
    auto reply = htmlReply(challengeHtml(last, hint, answersItself ? answer : ""));
    if (enrolment.course == Course::challengeIsSlow) reply.delay = slowness;
    return reply;
}

Reply challengeAnswer(const PageRequest& page) {
    auto& enrolment = page.enrolment;
    const auto form = [&](const char* name) { return page.request.get_param_value(name); };
    if (form("action") == "cancel") return redirectTo(endOf(enrolment, "2", "Cancelled by the cardholder"));
    if (form("code") != answer) {
        if (--enrolment.triesLeft == 0) return redirectTo(endOf(enrolment, "3", "Too many wrong codes"));
        return challengeForm(enrolment, "That code is wrong. Please try again.");
    }
    if (enrolment.course == Course::challengeDeclines) return redirectTo(endOf(enrolment, "1", "Declined by the bank"));
    return redirectTo(endOf(enrolment, pageSucceeded, "Cardholder recognised"));
}

Reply challenge(const PageRequest& page) {
    if (page.enrolment.course == Course::challengeNeverEnds) return htmlReply(waitingHtml());
    if (page.enrolment.course == Course::challengeEndsInFrame)
        return htmlReply(framedHtml("/acs/frame/" + page.enrolment.id));
    return page.request.method == "POST" ? challengeAnswer(page) : challengeForm(page.enrolment, "");
}

Reply frame(const PageRequest& page) {
    return redirectTo(endOf(page.enrolment, pageSucceeded, "Recognised in a frame"));
}

struct Page {
    std::string_view name;
    Reply (*reply)(const PageRequest&);
};
constexpr Page pages[]{{"fingerprint/", fingerprint}, {"challenge/", challenge}, {"frame/", frame}};

}  // namespace

std::string fingerprintUrl(const std::string& id) {
    return fmt::format("https://{}{}fingerprint/{}", issuerHost, issuerPath, id);
}

std::string challengeUrl(const World& world, const Enrolment& enrolment) {
    const std::string nobodyListens = "http://localhost:1";
    const auto& base = enrolment.course == Course::challengeCannotLoad ? nobodyListens : world.challengeBase;
    return fmt::format("{}{}challenge/{}", base, issuerPath, enrolment.id);
}

Reply issuerPage(World& world, const httplib::Request& request) {
    const auto path = std::string_view(request.path).substr(issuerPath.size());
    try {
        for (const auto& page : pages) {
            if (!path.starts_with(page.name)) continue;
            const auto enrolment = world.enrolments.find(std::string(path.substr(page.name.size())));
            if (enrolment == world.enrolments.end() || enrolment->second.ended)
                throw Refusal(404, "This page has ended.");
            return page.reply({world, request, enrolment->second});
        }
        throw Refusal(404, "There is no such page.");
    } catch (const Refusal& refusal) {
        return htmlReply(messageHtml(refusal.what()), refusal.status);
    }
}

}  // namespace kavio::sandbox
