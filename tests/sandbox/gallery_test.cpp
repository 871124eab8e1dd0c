#include "sandbox/gallery.h"

#include "sandbox/cards.h"
#include "sandbox/testcards.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

namespace kavio::test {
namespace {

using sandbox::galleryPage;
using sandbox::galleryPages;

TEST(Gallery, HasANumberAFileAndALineInTheManualForEachPage) {
    std::ifstream file(KAVIO_SOURCES "/docs/sandbox.md");
    std::string manual(std::istreambuf_iterator<char>(file), {});
    std::erase(manual, '`');
    std::set<std::string_view> names;
    for (const auto& page : galleryPages()) {
        SCOPED_TRACE(page.name);
        EXPECT_NO_THROW(sandbox::checkCard({std::string(page.number), 1, 2039, "7"}, {}, "card"));
        EXPECT_EQ(galleryPage(page.number), &page) << "another page has this number";
        EXPECT_TRUE(names.insert(page.name).second);
        EXPECT_NE(manual.find(fmt::format("| {} | {} | {} |", page.number, page.name, page.effect)), std::string::npos);
    }
    std::set<std::string_view> files;
    for (const auto& each : sandbox::galleryFiles) files.insert(each.name);
    EXPECT_EQ(files, names);
}

TEST(TestCards, HaveALineInTheReadme) {
    std::ifstream file(KAVIO_SOURCES "/README.md");
    const std::string readme(std::istreambuf_iterator<char>(file), {});
    for (const auto& card : sandbox::testCards()) {
        if (card.number == sandbox::declinedNumber) continue;  // not one for 3-D Secure
        EXPECT_NO_THROW(sandbox::checkCard({std::string(card.number), 1, 2039, "7"}, {}, "card"));
        EXPECT_NE(readme.find("| " + std::string(card.number) + " | "), std::string::npos) << card.number;
    }
}

TEST(Gallery, GivesTheReplyOfTheRequestsNameMethodAndTurn) {
    struct Case {
        const char* page;
        const char* name;
        std::size_t visits;
        const char* method;
        const char* body;
        int status;
        const char* shown;  // in the reply, or what the refusal says
    };
    for (const auto& c : std::initializer_list<Case>{
             {"4000000000003022", "page", 0, "GET", "", 200, "action=\"answer\""},
             {"4000000000003022", "answer", 0, "POST", "code=1234", 303, ""},
             {"4000000000003022", "answer", 0, "GET", "", 405, "Only POST is allowed here."},
             {"4000000000003022", "answer", 0, "POST", "code=4321", 400, "This request lacks code=1234"},
             {"4000000000003022", "other", 0, "GET", "", 404, "There is no such page."},
             {"4000000000003329", "status", 0, "POST", "", 200, "asked"},
             {"4000000000003329", "status", 1, "POST", "", 200, "seen"},
             {"4000000000003329", "status", 7, "POST", "", 200, "approved"},
         }) {
        httplib::Request request;
        request.method = c.method;
        request.body = c.body;
        sandbox::Reply reply;
        try {
            reply = galleryReply(*galleryPage(c.page), c.name, c.visits, request);
        } catch (const sandbox::Refusal& refusal) {
            reply = {.status = refusal.status, .body = refusal.what()};
        }
        EXPECT_EQ(reply.status, c.status) << c.name << " " << c.visits;
        EXPECT_THAT(reply.body, testing::HasSubstr(c.shown));
    }
}

}  // namespace
}  // namespace kavio::test
