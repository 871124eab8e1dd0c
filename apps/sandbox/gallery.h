#pragma once

#include "reply.h"
#include "world.h"

#include <httplib.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kavio::sandbox {

/// What a person has to do at a page so that it ends.
enum class Person { nothing, pressEnter, tryAgain, close };

/// A page as card issuers have them, chosen by the number of a card. It consists of the replies in pages/NAME.html.
struct GalleryPage {
    std::string_view number;
    std::string_view name;
    std::string_view effect;  // as the manual has it
    Flow flow = Flow::challenge;
    Person person = Person::nothing;
    std::string_view refusal = {};  // why the issuer says no in the end; empty if it says yes
    std::string_view host = "localhost";
};

/// A file of the folder "pages", built into the program.
struct GalleryFile {
    std::string_view name;
    std::string_view content;
};
extern const std::span<const GalleryFile> galleryFiles;

std::span<const GalleryPage> galleryPages();
/// Null for a card that does not choose any.
const GalleryPage* galleryPage(std::string_view cardNumber);

/// Names of this machine, besides "localhost", at which the pages are.
inline constexpr std::string_view schemeHost = "scheme.localhost";
inline constexpr std::string_view bankHost = "bank.localhost";
inline constexpr std::string_view longHost =
    "authentication.cards.customer-identification-and-approval-of-payments."
    "the-first-cooperative-savings-and-loan-bank-of-the-eastern-provinces.localhost";

/// One of a page's replies, as its file has it.
struct GalleryReply {
    std::string name;    // the last part of its path: "page" for the first
    std::string method;  // the only one that it is for; empty for any
    std::string needs;   // what the request's body or cookies must contain
    Reply reply;         // not compressed, and with names in its body and headers for the caller to fill in
};

/// Every reply of a page, in the order of its file.
std::vector<GalleryReply> galleryReplies(const GalleryPage& page);

/// What a request gets that follows `visits` others for the same name: where a file has a name more than once, these
/// get one reply after the other. Throws a Refusal if there is none, or if the request is not what the reply is for.
Reply galleryReply(const GalleryPage& page, std::string_view name, std::size_t visits, const httplib::Request& request);

std::string gzipped(const std::string& text);

}  // namespace kavio::sandbox
