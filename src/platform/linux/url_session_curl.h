#pragma once

#include "platform/linux/release.h"

#include <curl/curl.h>

#include <memory>

namespace kavio {

using CurlEasy = std::unique_ptr<CURL, Release<&curl_easy_cleanup>>;
using CurlMulti = std::unique_ptr<CURLM, Release<&curl_multi_cleanup>>;
using CurlShare = std::unique_ptr<CURLSH, Release<&curl_share_cleanup>>;
using CurlUrl = std::unique_ptr<CURLU, Release<&curl_url_cleanup>>;
using CurlText = std::unique_ptr<char, Release<&curl_free>>;

class CurlList {
public:
    bool append(const char* line) {
        curl_slist* grown = curl_slist_append(mHead.get(), line);
        if (grown == nullptr) return false;
        static_cast<void>(mHead.release());  // the longer list owns it
        mHead.reset(grown);
        return true;
    }
    curl_slist* get() const { return mHead.get(); }

private:
    std::unique_ptr<curl_slist, Release<&curl_slist_free_all>> mHead;
};

}  // namespace kavio
