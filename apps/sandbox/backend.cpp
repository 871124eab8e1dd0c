#include "backend.h"

#include "issuer.h"

#include <algorithm>
#include <cctype>

namespace kavio::sandbox {
namespace {

void spoil(const SetFault& set, Reply& reply) {
    const auto& fault = set.fault;
    reply.fault = set.id;
    reply.delay += fault.delay;
    reply.isLost = reply.isLost || fault.drop;
    reply.status = fault.status.value_or(reply.status);
    reply.body = fault.body.value_or(reply.body);
    reply.body.resize(std::max(reply.body.size(), fault.padTo), ' ');
    reply.cutAfter = fault.cutAfter;
}

}  // namespace

Request recordOf(const httplib::Request& request) {
    Request record{request.method, request.get_header_value("Host"), request.target, {}, request.body};
    for (const auto& [name, value] : request.headers) {
        auto lower = name;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return char(std::tolower(c)); });
        record.headers[lower] = value;
    }
    for (const auto* own : {"remote_addr", "remote_port", "local_addr", "local_port"}) record.headers.erase(own);
    return record;
}

Reply Backend::handle(const httplib::Request& request) {
    record(request);
    const bool isApi = request.path.starts_with(basePath);
    const auto fault = mFaults.take(request.method, isApi ? request.path.substr(basePath.size()) : request.path);
    const bool replaced = fault && (fault->fault.status || fault->fault.body || fault->fault.drop);
    Reply reply;
    if (!replaced || fault->fault.handled) reply = answer(request);
    if (fault) spoil(*fault, reply);
    return reply;
}

Reply Backend::handleIssuerPage(const httplib::Request& request) {
    record(request);
    return request.path.starts_with(issuerPath) ? answer(request) : Reply{.status = 404};
}

std::vector<Request> Backend::requests() const {
    const std::lock_guard lock(mMutex);
    return mRequests;
}

void Backend::clearRequests() {
    const std::lock_guard lock(mMutex);
    mRequests.clear();
}

void Backend::reset() {
    const std::lock_guard lock(mMutex);
    auto fresh = std::make_unique<Life>(mOptions);
    fresh->world.issuerScheme = mLife->world.issuerScheme;
    fresh->world.issuerPort = mLife->world.issuerPort;
    mLife = std::move(fresh);
    mRequests.clear();
    mFaults.clear();
    ++mResets;
}

void Backend::record(const httplib::Request& request) {
    if (!mIsRecording) return;
    auto record = recordOf(request);
    const std::lock_guard lock(mMutex);
    mRequests.push_back(std::move(record));
}

Reply Backend::answer(const httplib::Request& request) {
    const std::lock_guard lock(mMutex);
    if (request.path.starts_with(issuerPath)) return issuerPage(mLife->world, request);
    mLife->world.settleOrders();
    return mLife->service.handle(request);
}

}  // namespace kavio::sandbox
