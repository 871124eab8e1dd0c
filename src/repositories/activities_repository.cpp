#include "network/send_with_fresh_time.h"
#include "repositories/repositories.h"

#include <utility>

namespace kavio {

void ActivitiesRepository::activities(Parameters params, Completion<Orders> completion) const {
    sendWithFreshTime(activitesRequest(std::move(params)), std::move(completion));
}

void ActivitiesRepository::activityModels(Parameters params,
                                          Completion<std::vector<OrderActivityModel>> completion) const {
    sendWithFreshTime(activitesRequest(std::move(params)), std::move(completion));
}

}  // namespace kavio
