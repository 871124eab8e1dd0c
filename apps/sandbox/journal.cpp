#include "journal.h"

#include <algorithm>
#include <iterator>

namespace kavio::sandbox {
namespace {

/// The start of a text. Its end may be half a character.
Excerpt excerptOf(const std::string& text) { return {text.substr(0, Journal::mostText), text.size()}; }

/// Leaves out the headers for which there is no room.
void cutHeaders(std::map<std::string, std::string>& headers) {
    std::size_t room = Journal::mostText;
    std::erase_if(headers, [&](const auto& header) {
        const auto size = header.first.size() + header.second.size();
        const bool isLeftOut = size > room;
        if (!isLeftOut) room -= size;
        return isLeftOut;
    });
}

}  // namespace

std::uint64_t Journal::begin(Request request, TimePoint arrived) {
    Exchange exchange;
    exchange.arrived = arrived;
    exchange.bodySize = request.body.size();
    request.body = excerptOf(request.body).text;
    cutHeaders(request.headers);
    exchange.request = std::move(request);

    const std::lock_guard lock(mMutex);
    exchange.number = ++mLastNumber;
    exchange.change = ++mLastChange;
    mExchanges.push_back(std::move(exchange));
    if (mExchanges.size() > mostExchanges) mExchanges.pop_front();
    return mLastNumber;
}

void Journal::end(std::uint64_t number, const Reply& reply, std::optional<Verdict> verdict) {
    Exchange::Answer answer{reply.status, excerptOf(reply.body), reply.delay, reply.fault, reply.isLost};
    const std::lock_guard lock(mMutex);
    const auto found = std::ranges::find(mExchanges, number, &Exchange::number);
    if (found == mExchanges.end()) return;  // forgotten meanwhile
    found->change = ++mLastChange;
    found->verdict = verdict;
    found->answer = std::move(answer);
}

void Journal::clear() {
    const std::lock_guard lock(mMutex);
    mExchanges.clear();
}

std::vector<Exchange> Journal::changedSince(std::uint64_t change) const {
    const std::lock_guard lock(mMutex);
    std::vector<Exchange> changed;
    std::ranges::copy_if(mExchanges, std::back_inserter(changed), [&](const auto& e) { return e.change > change; });
    return changed;
}

std::uint64_t Journal::first() const {
    const std::lock_guard lock(mMutex);
    return mExchanges.empty() ? mLastNumber + 1 : mExchanges.front().number;
}

}  // namespace kavio::sandbox
