#pragma once

#include "models/machine_model.h"
#include "models/request_models.h"
#include "repositories/services.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kavio {

/// Machine look-ups, by filter values or by the text of a scanned code.
class MachineRepository : private MachineService, public std::enable_shared_from_this<MachineRepository> {
public:
    using MachineService::products;

    void machines(MachineQuery query, Completion<PublicList<MachineModel>> completion);

    /// Looks up the machine that a machine number, QR or NFC text or terminal label names. False, and `completion` is
    /// never called, when the text is none of these.
    bool machinesByCode(const std::string& text, std::int64_t limit, std::optional<std::int64_t> operatorId,
                        Completion<PublicList<MachineModel>> completion);

    /// The last look-up of a single machine, and what it found first; null for nothing.
    std::optional<MachineByValueModel> lastMachineRequest() const;
    std::shared_ptr<const Machine> lastMachineResponse() const;

private:
    mutable std::mutex mMutex;  // guards the two below: look-ups may start on any thread
    std::optional<MachineByValueModel> mLastMachineRequest;
    std::shared_ptr<const Machine> mLastMachineResponse;
};

/// What a scanned or typed code stands for: the filter values of its look-up. Absent for a text that is no code.
std::optional<MachineQuery> machineQueryForCode(const std::string& text);

/// Whether `digits` ends in its Damm check digit. Anything but ASCII digits fails.
bool passesDammTest(std::string_view digits);

}  // namespace kavio
