#include "api/state.h"
#include "models/date_text.h"
#include "models/json/json_value.h"

namespace kavio {
namespace {

constexpr std::int64_t defaultLookUpLimit = 50;
constexpr std::int64_t maximumAccountLimit = 500;

bool isGiven(const std::optional<std::string>& text) { return text && !text->empty(); }

// The first kind of query that the filter allows, if it has no value to look up; absent when it allows none.
std::optional<MachineQuery> machineQuery(const MachineFilter& filter) {
    if (isGiven(filter.hwSerial)) return MachineQuery{.limit = filter.limit, .hwSerial = filter.hwSerial};
    if (filter.latitude && filter.longitude) {
        return MachineQuery{.longitude = filter.longitude,
                            .latitude = filter.latitude,
                            .limit = filter.limit,
                            .distance = filter.radius,
                            .country = filter.country,
                            .operatorId = filter.operatorId};
    }
    if (filter.limit && *filter.limit >= 1 && *filter.limit <= maximumAccountLimit) {
        return MachineQuery{.limit = filter.limit, .isByAccount = true};
    }
    return std::nullopt;
}

Parameters activitiesParameters(const TransactionFilter& filter) {
    Parameters params;
    setIfPresent(params, "machine_id", filter.machineId);
    setIfPresent(params, "card_id", filter.paymentMethodId);
    if (filter.paymentType) params["paymentSource"] = static_cast<std::int64_t>(*filter.paymentType);
    setIfPresent(params, "limit", filter.limit);
    if (filter.transactionsBefore) params["beforeAuTime"] = DateText::format(*filter.transactionsBefore);
    return params;
}

// A list is absent when the reply carried none.
constexpr auto asItIs = [](auto list) { return list; };

}  // namespace

void Kavio::getMachines(std::shared_ptr<const MachineFilter> filter) {
    mState->perform(
        &KavioDelegate::onGetMachines, Purpose::ASK, [&](const State::Operation<std::optional<Machines>>& operation) {
            auto machinesResponse = operation.finish<Machines>(asItIs);
            if (filter && isGiven(filter->value)) {
                if (mState->mMachineRepo->machinesByCode(*filter->value, filter->limit.value_or(defaultLookUpLimit),
                                                         filter->operatorId, std::move(machinesResponse))) {
                    return;
                }
                return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT,
                                      "{" + *filter->value + "} is invalid machine ID or QR code");
            }
            auto query = filter ? machineQuery(*filter) : MachineQuery{.isByAccount = true};
            if (!query) return operation.fail(ResultType::BAD_INPUT, Cause::INVALID_INPUT, "invalid filter");
            mState->mMachineRepo->machines(*std::move(query), std::move(machinesResponse));
        });
}

void Kavio::getMachineProducts(std::int64_t machineId) {
    mState->perform(&KavioDelegate::onGetMachineProducts, Purpose::ASK,
                    [&](const State::Operation<std::optional<Products>>& operation) {
                        mState->mMachineRepo->products(static_cast<std::uint64_t>(machineId),
                                                       operation.finish<Products>(asItIs));
                    });
}

void Kavio::getTransactions(std::shared_ptr<const TransactionFilter> filter) {
    mState->perform(&KavioDelegate::onGetTransactions, Purpose::ASK,
                    [&](const State::Operation<std::optional<Orders>>& operation) {
                        mState->mActivitiesRepo->activities(filter ? activitiesParameters(*filter) : Parameters{},
                                                            operation.finish<Orders>(asItIs));
                    });
}

}  // namespace kavio
