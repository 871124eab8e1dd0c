#include "network/send_with_fresh_time.h"
#include "repositories/machine_code.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {

void MachineRepository::machines(const MachineQuery& query, Completion<Machines> completion) {
    const bool single = query.kavioMachineId || query.qr_scan || query.qr_number;
    {
        const std::lock_guard lock(mMutex);
        mLastMachineResponse.reset();
        mLastMachineRequest.reset();
        if (single) mLastMachineRequest = MachineByValueModel{query.kavioMachineId, query.qr_scan, query.qr_number};
    }
    sendWithFreshTime<Machines>(
        machineByValueRequest(query),
        [weak = weak_from_this(), completion = std::move(completion)](APIResult<Machines> reply) {
            if (const auto self = weak.lock(); self && reply) {
                const std::lock_guard lock(self->mMutex);
                const bool found = reply.payload() && !reply.payload()->empty();
                if (self->mLastMachineRequest) self->mLastMachineResponse = found ? reply.payload()->front() : nullptr;
            }
            completion(std::move(reply));
        });
}

bool MachineRepository::machinesByCode(const std::string& text, std::int64_t limit,
                                       std::optional<std::int64_t> operatorId, Completion<Machines> completion) {
    auto query = machineQueryForCode(text);
    if (!query) return false;
    query->limit = limit;
    query->operatorId = operatorId;
    machines(*query, std::move(completion));
    return true;
}

void MachineRepository::products(std::uint64_t machineId, Completion<Products> completion) const {
    sendWithFreshTime(machineProductsRequest(machineId), std::move(completion));
}

std::optional<MachineByValueModel> MachineRepository::lastMachineRequest() const {
    const std::lock_guard lock(mMutex);
    return mLastMachineRequest;
}

std::shared_ptr<const Machine> MachineRepository::lastMachineResponse() const {
    const std::lock_guard lock(mMutex);
    return mLastMachineResponse;
}

}  // namespace kavio
