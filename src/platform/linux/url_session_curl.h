#pragma once

#include "platform/linux/release.h"

#include <curl/curl.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

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

inline bool hasBreak(std::string_view text) {
    return text.find('\r') != std::string_view::npos || text.find('\n') != std::string_view::npos;
}

/// Whether libcurl takes `text` as it is: it neither begins a new line nor ends early.
inline bool isLine(std::string_view text) { return !hasBreak(text) && text.find('\0') == std::string_view::npos; }

/// A list that libcurl only reads, in two pieces of memory instead of two for each line.
class CurlLines {
public:
    void clear() {
        mText.clear();
        mNodes.clear();
    }
    void append(std::string_view start, std::string_view separator = {}, std::string_view end = {}) {
        mNodes.push_back({nullptr, nullptr});
        mText.append(start).append(separator).append(end).push_back('\0');
    }
    void reserve(std::size_t lines, std::size_t bytes) {
        mNodes.reserve(lines);
        mText.reserve(bytes);
    }
    /// Whether libcurl takes each of them as it is.
    bool areWellFormed() const {
        std::string_view left = mText;
        for (std::size_t i = 0; i < mNodes.size(); ++i) left.remove_prefix(left.find('\0') + 1);
        return left.empty() && !hasBreak(mText);
    }
    /// Null without any lines. Valid until they change.
    curl_slist* get() {
        char* line = mText.data();
        for (std::size_t i = 0; i < mNodes.size(); line += std::string_view(line).size() + 1, ++i)
            mNodes[i] = {line, i + 1 < mNodes.size() ? &mNodes[i + 1] : nullptr};
        return mNodes.empty() ? nullptr : mNodes.data();
    }

private:
    std::string mText;
    std::vector<curl_slist> mNodes;
};

}  // namespace kavio
