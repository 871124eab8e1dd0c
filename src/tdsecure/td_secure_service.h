#pragma once

#include "network/api_result.h"
#include "tdsecure/messages.h"
#include "tdsecure/replies.h"

#include <string>

namespace kavio {

/// What an enrolment asks of the service and of the card's issuer. It keeps nothing; completions run on the main
/// thread, once.
class TDSecureService {
public:
    void addCard(TDSAddCard body, Completion<TDSAddCardResponseFactory> completion) const;
    void getCard(TDSGetCard body, Completion<TDSGetCardResponseFactory> completion) const;
    /// The issuer's fingerprint page at `url`, as text.
    void getPage(std::string url, TDSGetPage body, Completion<std::string> completion) const;
};

}  // namespace kavio
