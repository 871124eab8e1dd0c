#include "issuer.h"

#include "gallery.h"
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
    std::string part;  // what follows the transaction in the path
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

/// Where the issuer's visible pages are, by one of this machine's names.
std::string placeOf(const World& world, std::string_view host, std::string_view scheme) {
    return fmt::format("{}://{}:{}{}", scheme, host, world.issuerPort, issuerPath);
}

/// The start of the addresses of a gallery page's replies.
std::string galleryPlace(const World& world, const Enrolment& enrolment, std::string_view host,
                         std::string_view scheme) {
    return fmt::format("{}gallery/{}/", placeOf(world, host, scheme), enrolment.id);
}

Reply gallery(const PageRequest& page) {
    auto& enrolment = page.enrolment;
    if (enrolment.page == nullptr) throw Refusal(404, "There is no such page.");
    const auto name = page.part.empty() ? "page" : page.part;
    auto& visits = enrolment.visits[name];
    auto reply = galleryReply(*enrolment.page, name, visits, page.request);
    ++visits;

    const auto place = [&](std::string_view host) {
        return galleryPlace(page.world, enrolment, host, page.world.issuerScheme);
    };
    const Values places{{"@issuer@", place(enrolment.page->host)},
                        {"@scheme@", place(schemeHost)},
                        {"@bank@", place(bankHost)},
                        {"@plain@", galleryPlace(page.world, enrolment, enrolment.page->host, "http")}};
    const auto fill = [&](std::string& text) {
        text = filledPage(text, places);
        if (text.find("@end@") == std::string::npos) return;
        const auto& refusal = enrolment.page->refusal;
        const auto end =
            refusal.empty() ? endOf(enrolment, pageSucceeded, "Cardholder recognised") : endOf(enrolment, "1", refusal);
        text = filled(text, {{"@end@", end}});
    };
    fill(reply.body);
    for (auto& [header, value] : reply.headers) fill(value);
    if (reply.headers.contains("Content-Encoding")) reply.body = gzipped(reply.body);
    return reply;
}

Reply fingerprint(const PageRequest& page) {
    if (page.request.method != "POST") throw Refusal(405, "only POST is allowed here");
    checkFingerprintRequest(page);
    if (page.enrolment.page != nullptr) return gallery(page);
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
constexpr Page pages[]{
    {"fingerprint/", fingerprint}, {"challenge/", challenge}, {"frame/", frame}, {"gallery/", gallery}};

}  // namespace

std::string fingerprintUrl(const std::string& id) {
    return fmt::format("https://{}{}fingerprint/{}", issuerHost, issuerPath, id);
}

std::string challengeUrl(const World& world, const Enrolment& enrolment) {
    if (enrolment.page != nullptr) return galleryPlace(world, enrolment, enrolment.page->host, world.issuerScheme);
    // Not 127.0.0.1: the library takes an address that begins like that for the end of a page.
    const auto place = enrolment.course == Course::challengeCannotLoad
                           ? fmt::format("http://localhost:1{}", issuerPath)  // where nobody listens
                           : placeOf(world, "localhost", world.issuerScheme);
    return fmt::format("{}challenge/{}", place, enrolment.id);
}

Reply issuerPage(World& world, const httplib::Request& request) {
    const auto path = std::string_view(request.path).substr(issuerPath.size());
    try {
        for (const auto& page : pages) {
            if (!path.starts_with(page.name)) continue;
            const auto rest = path.substr(page.name.size());
            const auto id = rest.substr(0, rest.find('/'));
            const auto found = world.enrolments.find(std::string(id));
            // A page of the gallery may be asked for again after one of its replies has named the end.
            if (found == world.enrolments.end() || (found->second.ended && found->second.page == nullptr))
                throw Refusal(404, "This page has ended.");
            const auto part = id.size() < rest.size() ? rest.substr(id.size() + 1) : "";
            return page.reply({world, request, found->second, std::string(part)});
        }
        throw Refusal(404, "There is no such page.");
    } catch (const Refusal& refusal) {
        return htmlReply(messageHtml(refusal.what()), refusal.status);
    }
}

}  // namespace kavio::sandbox
