#include "api/state.h"
#include "models/date_text.h"
#include "models/json/json_value.h"
#include "models/public_objects.h"

namespace kavio {
namespace {

constexpr std::int64_t defaultLookUpLimit = 50;
constexpr std::int64_t maximumAccountLimit = 500;

bool isGiven(const std::optional<std::string>& text) { return text && !text->empty(); }

// The first shape that the filter has, for a filter without a value to look up; absent when it has none.
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

JsonObject activitiesParameters(const TransactionFilter& filter) {
    JsonObject params;
    setIfPresent(params, "machine_id", filter.machineId);
    setIfPresent(params, "card_id", filter.paymentMethodId);
    if (filter.paymentType) params["paymentSource"] = static_cast<std::int64_t>(*filter.paymentType);
    setIfPresent(params, "limit", filter.limit);
    if (filter.transactionsBefore) params["beforeAuTime"] = DateText::format(*filter.transactionsBefore);
    return params;
}

// Absent when the reply carried no list.
template <class Record>
auto objectsOf(APIResult<PublicList<Record>> reply) {
    auto list = std::move(reply).payload();
    return list ? std::optional(std::move(list->objects)) : std::nullopt;
}

}  // namespace

void Kavio::getMachines(std::shared_ptr<const MachineFilter> filter) {
    if (!mState->isIdle(&KavioDelegate::onGetMachines)) return;
    auto handler = mState->handled(&State::machinesResponse);
    if (filter && isGiven(filter->value)) {
        if (!mState->mMachineRepo->machinesByCode(*filter->value, filter->limit.value_or(defaultLookUpLimit),
                                                  filter->operatorId, std::move(handler))) {
            return mState->fail(&KavioDelegate::onGetMachines, ResultType::BAD_INPUT,
                                "{" + *filter->value + "} is invalid machine ID or QR code");
        }
        mState->mIsBusy = true;
        return;
    }
    auto query = filter ? machineQuery(*filter) : MachineQuery{.isByAccount = true};
    if (!query) return mState->fail(&KavioDelegate::onGetMachines, ResultType::BAD_INPUT, "invalid filter");
    mState->mIsBusy = true;
    mState->mMachineRepo->machines(*std::move(query), std::move(handler));
}

void Kavio::State::machinesResponse(APIResult<PublicList<MachineModel>> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onGetMachines, reply.failure());
    succeed(&KavioDelegate::onGetMachines, objectsOf(std::move(reply)));
}

void Kavio::getMachineProducts(std::int64_t machineId) {
    if (!mState->isIdle(&KavioDelegate::onGetMachineProducts)) return;
    mState->mIsBusy = true;
    mState->mMachineRepo->products(static_cast<std::uint64_t>(machineId),
                                   mState->handled(&State::machineProductsResponse));
}

void Kavio::State::machineProductsResponse(APIResult<PublicList<MachineProduct>> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onGetMachineProducts, reply.failure());
    succeed(&KavioDelegate::onGetMachineProducts, objectsOf(std::move(reply)));
}

void Kavio::getTransactions(std::shared_ptr<const TransactionFilter> filter) {
    if (!mState->isIdle(&KavioDelegate::onGetTransactions)) return;
    mState->mIsBusy = true;
    mState->mActivitiesRepo->activities(filter ? activitiesParameters(*filter) : JsonObject{},
                                        mState->handled(&State::activitiesResponse));
}

void Kavio::State::activitiesResponse(APIResult<PublicList<OrderActivityModel>> reply) {
    mIsBusy = false;
    if (!reply) return fail(&KavioDelegate::onGetTransactions, reply.failure());
    succeed(&KavioDelegate::onGetTransactions, objectsOf(std::move(reply)));
}

}  // namespace kavio
