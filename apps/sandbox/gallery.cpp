#include "gallery.h"

#include <zlib.h>

#include <algorithm>

namespace kavio::sandbox {
namespace {

// Fingerprints have numbers from 400000000000201…, challenges from 400000000000301…; the last digit is the check digit.
constexpr GalleryPage pages[]{
    {.number = "4000000000002016",
     .name = "fingerprint-form",
     .effect = "posts a form to the end in a hidden frame",
     .flow = Flow::fingerprint},
    {.number = "4000000000002024",
     .name = "fingerprint-frames",
     .effect = "frames in frames; the innermost posts a form to the end",
     .flow = Flow::fingerprint},
    {.number = "4000000000002032",
     .name = "fingerprint-animation",
     .effect = "goes on at the end of a CSS animation",
     .flow = Flow::fingerprint},
    {.number = "4000000000002040",
     .name = "fingerprint-painting",
     .effect = "waits for twelve requestAnimationFrame",
     .flow = Flow::fingerprint},
    {.number = "4000000000002057",
     .name = "fingerprint-in-sight",
     .effect = "waits until an IntersectionObserver sees it",
     .flow = Flow::fingerprint},
    {.number = "4000000000002065",
     .name = "fingerprint-lazy-image",
     .effect = "waits for a lazy image",
     .flow = Flow::fingerprint},
    {.number = "4000000000002073",
     .name = "fingerprint-visibility",
     .effect = "waits until the document is visible",
     .flow = Flow::fingerprint},
    {.number = "4000000000002081",
     .name = "fingerprint-device",
     .effect = "canvas, fonts, storage, and a chain of timers",
     .flow = Flow::fingerprint},
    {.number = "4000000000002099",
     .name = "fingerprint-worker",
     .effect = "computes in a worker",
     .flow = Flow::fingerprint},
    {.number = "4000000000002107",
     .name = "fingerprint-refresh",
     .effect = "a meta refresh, without a script",
     .flow = Flow::fingerprint},
    {.number = "4000000000002115",
     .name = "fingerprint-dialogs",
     .effect = "alert, confirm, prompt",
     .flow = Flow::fingerprint},
    {.number = "4000000000002123",
     .name = "fingerprint-collector",
     .effect = "a frame from the issuer posts a form, and 303 leads to the end",
     .flow = Flow::fingerprint},
    {.number = "4000000000003014", .name = "post-chain", .effect = "forms post themselves over three hosts"},
    {.number = "4000000000003022", .name = "see-other", .effect = "303 after a POST, to a page that ends"},
    {.number = "4000000000003030",
     .name = "temporary-redirect",
     .effect = "307 after a POST, twice: the form goes along to the end"},
    {.number = "4000000000003048",
     .name = "frames",
     .effect = "frames in frames; the innermost posts a form for the whole page"},
    {.number = "4000000000003055", .name = "plain-frame", .effect = "a frame whose address is the end, in plain http"},
    {.number = "4000000000003063", .name = "lost-frame", .effect = "a plain-http frame that does not come"},
    {.number = "4000000000003071", .name = "frameset", .effect = "framesets of old, and 301"},
    {.number = "4000000000003089", .name = "message", .effect = "page and frame talk by postMessage"},
    {.number = "4000000000003097", .name = "locked-down", .effect = "a content security policy and a sandboxed frame"},
    {.number = "4000000000003105", .name = "service-worker", .effect = "a service worker answers"},
    {.number = "4000000000003113",
     .name = "single-page",
     .effect = "a single-page application: pushState, back, popstate"},
    {.number = "4000000000003121", .name = "back", .effect = "goes to another page and back"},
    {.number = "4000000000003139", .name = "refresh", .effect = "a meta refresh, then a Refresh header"},
    {.number = "4000000000003147", .name = "gzip", .effect = "compressed with gzip"},
    {.number = "4000000000003154", .name = "drip", .effect = "the body comes in drops"},
    {.number = "4000000000003162", .name = "events", .effect = "waits for server-sent events"},
    {.number = "4000000000003170", .name = "fonts", .effect = "a font that never comes", .person = Person::pressEnter},
    {.number = "4000000000003188", .name = "lazy-images", .effect = "scrolls to lazy images and waits for them"},
    {.number = "4000000000003196",
     .name = "animation",
     .effect = "animation, frames and transition, one after the other"},
    {.number = "4000000000003204",
     .name = "captcha",
     .effect = "a check of the browser, then a button",
     .person = Person::pressEnter},
    {.number = "4000000000003212",
     .name = "app-link",
     .effect = "tries the bank's app by two links, which are refused, then asks for a code",
     .person = Person::pressEnter},
    {.number = "4000000000003220", .name = "window-close", .effect = "closes itself, in vain"},
    {.number = "4000000000003238", .name = "window-open", .effect = "opens windows, in vain, then does without"},
    {.number = "4000000000003246", .name = "printing", .effect = "opens the print and file dialogs, in vain"},
    {.number = "4000000000003253",
     .name = "dialogs",
     .effect = "alert, confirm, prompt, all unanswered, then a button",
     .person = Person::pressEnter},
    {.number = "4000000000003261", .name = "leaving", .effect = "holds the person up with beforeunload, in vain"},
    {.number = "4000000000003279", .name = "download", .effect = "downloads three times, in vain"},
    {.number = "4000000000003287",
     .name = "hebrew",
     .effect = "right-to-left, in Hebrew",
     .person = Person::pressEnter},
    {.number = "4000000000003295",
     .name = "screen-reader",
     .effect = "labels, landmarks and live regions for a screen reader",
     .person = Person::pressEnter},
    {.number = "4000000000003303",
     .name = "long",
     .effect = "five thousand paragraphs above the button",
     .person = Person::pressEnter},
    {.number = "4000000000003311", .name = "long-host", .effect = "a host with a very long name", .host = longHost},
    {.number = "4000000000003329", .name = "approval", .effect = "polls until the bank's app approves"},
    {.number = "4000000000003337", .name = "no-approval", .effect = "polls for ever", .person = Person::close},
    {.number = "4000000000003345",
     .name = "lost-connection",
     .effect = "the first connection is lost",
     .person = Person::tryAgain},
    {.number = "4000000000003352",
     .name = "server-error",
     .effect = "500 with a button of its own",
     .person = Person::pressEnter},
    {.number = "4000000000003360",
     .name = "wrong-certificate",
     .effect = "a certificate for other hosts",
     .person = Person::close,
     .host = "stranger.localhost"},
    {.number = "4000000000003378", .name = "cookies", .effect = "cookies and local storage from one page to the next"},
    {.number = "4000000000003386", .name = "written", .effect = "document.write"},
    {.number = "4000000000003394",
     .name = "declined",
     .effect = "says no",
     .person = Person::pressEnter,
     .refusal = "Your bank has declined"},
    {.number = "4000000000003402", .name = "code-boxes", .effect = "a box for each digit, filled in by script"},
};

// What begins a reply in a file.
constexpr std::string_view separator = "\n=== ";

/// The text up to `mark`, which is taken off `rest` with it.
std::string_view upTo(std::string_view mark, std::string_view& rest) {
    const auto at = std::min(rest.find(mark), rest.size());
    const auto taken = rest.substr(0, at);
    rest.remove_prefix(std::min(at + mark.size(), rest.size()));
    return taken;
}

std::chrono::milliseconds milliseconds(const std::string& text) { return std::chrono::milliseconds(std::stol(text)); }

/// What a line before a reply's body says. Any name that is not ours is a header.
void apply(const std::string& name, const std::string& value, GalleryReply& to) {
    if (name == "Method")
        to.method = value;
    else if (name == "Needs")
        to.needs = value;
    else if (name == "Status")
        to.reply.status = std::stoi(value);
    else if (name == "Delay")
        to.reply.delay = milliseconds(value);
    else if (name == "Drip")
        to.reply.drip = milliseconds(value);
    else if (name == "Lost")
        to.reply.isLost = true;
    else if (name == "Content-Type")
        to.reply.type = value;
    else
        to.reply.headers[name] = value;
}

/// A reply's head is its name, and a line for each thing that is not as usual.
GalleryReply parsed(std::string_view head, std::string_view body) {
    GalleryReply made;
    made.name = upTo("\n", head);
    made.reply.type = "text/html; charset=utf-8";
    made.reply.body = body;
    while (!head.empty()) {
        auto value = upTo("\n", head);
        const auto name = upTo(": ", value);
        apply(std::string(name), std::string(value), made);
    }
    // The server compresses by itself what it does not send in pieces.
    if (made.reply.headers.contains("Content-Encoding") && !made.reply.drip) made.reply.drip.emplace(0);
    return made;
}

}  // namespace

std::span<const GalleryPage> galleryPages() { return pages; }

const GalleryPage* galleryPage(std::string_view cardNumber) {
    const auto* const found = std::ranges::find(pages, cardNumber, &GalleryPage::number);
    return found == std::end(pages) ? nullptr : found;
}

std::vector<GalleryReply> galleryReplies(const GalleryPage& page) {
    const auto file = std::ranges::find(galleryFiles, page.name, &GalleryFile::name);
    auto rest = file == galleryFiles.end() ? std::string_view() : file->content;
    std::vector<GalleryReply> replies;
    // A page that has nothing unusual about it has no head.
    if (!rest.starts_with(separator.substr(1)))
        replies.push_back(parsed("page", upTo(separator, rest)));
    else
        rest.remove_prefix(separator.size() - 1);
    while (!rest.empty()) {
        auto body = upTo(separator, rest);
        const auto head = upTo("\n\n", body);
        replies.push_back(parsed(head, body));
    }
    return replies;
}

Reply galleryReply(const GalleryPage& page, std::string_view name, std::size_t visits,
                   const httplib::Request& request) {
    auto replies = galleryReplies(page);
    std::erase_if(replies, [&](const auto& reply) { return reply.name != name; });
    if (replies.empty()) throw Refusal(404, "There is no such page.");
    auto& chosen = replies[std::min(visits, replies.size() - 1)];
    if (!chosen.method.empty() && request.method != chosen.method)
        throw Refusal(405, "Only " + chosen.method + " is allowed here.");
    if (request.body.find(chosen.needs) == std::string::npos &&
        request.get_header_value("Cookie").find(chosen.needs) == std::string::npos)
        throw Refusal(400, "This request lacks " + chosen.needs);
    return std::move(chosen.reply);
}

std::string gzipped(const std::string& text) {
    constexpr int withGzipHeader = 16 + MAX_WBITS;
    constexpr int usualMemory = 8;
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, withGzipHeader, usualMemory, Z_DEFAULT_STRATEGY) !=
        Z_OK)
        throw std::bad_alloc();
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = uInt(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = uInt(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

}  // namespace kavio::sandbox
