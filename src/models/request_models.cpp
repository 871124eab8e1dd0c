#include "models/request_models.h"

#include "models/json/json_value.h"
#include "models/json/keyed_container.h"

namespace kavio {

MachineByValueModel MachineByValueModel::decode(const KeyedContainer& in) {
    return {
        .machineId = in.optional("kavioMachineId"),
        .qrScan = in.optional("uni_qr_scan"),
        .qrNumber = in.optional("uni_qr_number"),
    };
}

JsonObject MachineByValueModel::encode() const {
    JsonObject object;
    setIfPresent(object, "kavioMachineId", machineId);
    setIfPresent(object, "uni_qr_scan", qrScan);
    setIfPresent(object, "uni_qr_number", qrNumber);
    return object;
}

}  // namespace kavio
