#pragma once

#include <string>

/// The service's replies, as short as possible.
namespace kavio::test::replies {

inline const std::string challenge = R"({"challenge":{"challenge":"c1","phone":"5","retryTimeoutSeconds":30}})";
inline const std::string token = R"({"token":{"token":"t1"}})";
inline const std::string ok = R"({"ok":true})";
inline const std::string account =
    R"({"token":{"token":"t1"},"account":{"phone":"501","country":"DE","currency":"EUR","balance":500,)"
    R"("currencyDecimalDigits":2,"paypalClientId":"","tokenLocators":[)"
    R"({"locator":"L1","securityCode":7,"label":"**11","issuer":"visa","month":1,"year":2030,"processorType":"paymentcard","id":1},)"
    R"({"locator":"L2","securityCode":8,"label":"**22","month":2,"year":2031,"processorType":"paymentcard","id":2}]}})";
inline const std::string prepaids =
    R"({"prepaidCards":[{"cardId":9,"cardNumber":"99","revalue":true,"balance":1000,"cardLimit":500,"cardStatus":1,)"
    R"("createdTime":"2020-01-02T03:04:05.678","cardType":1,"currency":{"code":"EUR","decimalDigits":2},)"
    R"("fullTreeOperatorsField":[],"isMoney":true}]})";

inline std::string order(const std::string& status, const std::string& id = "77") {
    return R"({"order":{"id":")" + id + R"(","orderType":"vending","orderStatus":")" + status + R"("}})";
}

/// A time reply that is good until the end of `year`, from a server whose clock shows 1 June of that year.
inline std::string time(const std::string& year) {
    return R"({"serverTime":")" + year + R"(-06-01T00:00:00.000+0000","expireTime":")" + year +
           R"(-12-31T00:00:00.000+0000"})";
}

}  // namespace kavio::test::replies
