// Decodes arbitrary bytes as any record and, if that succeeds, makes the public object and its debug text. The first
// byte of the input selects the record.

#include "fuzz.h"
#include "models/account_model.h"
#include "models/json/decoding_error.h"
#include "models/json/document.h"
#include "models/json/json_value.h"
#include "models/machine_model.h"
#include "models/order_activity_model.h"
#include "models/order_model.h"
#include "models/product_model.h"
#include "models/request_models.h"
#include "models/td_secure_replies.h"
#include "reserved/records.h"

#include <kavio/delegate.h>
#include <kavio/testing/device.h>

#include <string>
#include <type_traits>

namespace kavio::fuzz {
namespace {

template <class T>
void use(T record) {
    if constexpr (std::is_same_v<T, JsonValue>) {
        const auto text = record.dump();
        must(Document(text).root().as<JsonValue>() == record, "what was read is written and read the same");
    } else if constexpr (requires { publicObject(std::move(record)); }) {
        publicObject(std::move(record))->debugDescription();
    } else if constexpr (requires { record.encode().dump(); }) {  // this one keeps the order of its keys
        record.encode().dump();
    } else if constexpr (requires { serialise(record.encode()); }) {
        serialise(record.encode());
    } else if constexpr (isList<T>) {
        for (const auto& object : record) object->debugDescription();
    }
}

template <class T>
void decode(const std::string& body) {
    try {
        const Document document(body);
        use(document.root().as<T>());
    } catch (const DecodingError&) {  // the expected outcome for most inputs
    }
}

constexpr void (*decoders[])(const std::string&) = {
    decode<Machines>,
    decode<Products>,
    decode<OrderModel>,
    decode<OrderModelResponse>,
    decode<Orders>,
    decode<AccountModel>,
    decode<Configuration>,
    decode<Challenge>,
    decode<Token>,
    decode<LogOutResponse>,
    decode<KavioCardModel>,
    decode<AddCreditCardResponse>,
    decode<DeleteCreditResponse>,
    decode<PrepaidsList>,
    decode<DepositModel>,
    decode<VoucherModel>,
    decode<Campaigns>,
    decode<MachineReviewModel>,
    decode<PurchaseGameResponse>,
    decode<CheckGeoIPResponse>,
    decode<PrepaidCreateVirtualCardResponse>,
    decode<PrepaidCreatePhysicalCardResponse>,
    decode<ServerTimeResponse>,
    decode<BasicResponse>,
    decode<ErrorKeys>,
    decode<ErrorModel>,
    decode<MachineByValueModel>,
    decode<PlaceOrderModel>,
    decode<JsonValue>,
    decode<TDSAddCardResponseFactory>,
    decode<TDSGetCardResponseFactory>,
};

}  // namespace

void tryInput(Input input) {
    static const test::Device device;
    const auto which = input.byte();
    decoders[which % std::size(decoders)](input.rest());
}

}  // namespace kavio::fuzz
