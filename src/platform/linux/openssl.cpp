#include "platform/linux/openssl.h"

#include "platform/linux/hexadecimal.h"
#include "platform/linux/release.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <array>
#include <memory>
#include <mutex>
#include <new>

namespace kavio {
namespace {

/// With our arguments OpenSSL fails for want of memory, or of something that is just as vital, such as entropy.
void check(bool succeeded) {
    if (succeeded) return;
    ERR_clear_error();
    throw std::bad_alloc();
}

const unsigned char* unsignedBytes(std::string_view bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

class OpensslDigest final : public Digest {
public:
    OpensslDigest() { check(mSha1 && mContext); }

    Sha1 sha1(std::string_view bytes) const override {
        Sha1 digest{};
        const std::lock_guard lock(mMutex);
        check(EVP_DigestInit_ex2(mContext.get(), mSha1.get(), nullptr) == 1 &&
              EVP_DigestUpdate(mContext.get(), bytes.data(), bytes.size()) == 1 &&
              EVP_DigestFinal_ex(mContext.get(), digest.data(), nullptr) == 1);
        return digest;
    }

private:
    // Kept, because to look the algorithm up and to make a context take longer than hashing a short text.
    const std::unique_ptr<EVP_MD, Release<&EVP_MD_free>> mSha1{EVP_MD_fetch(nullptr, "SHA1", nullptr)};
    const std::unique_ptr<EVP_MD_CTX, Release<&EVP_MD_CTX_free>> mContext{EVP_MD_CTX_new()};
    mutable std::mutex mMutex;  // of the context
};

class OpensslBase64 final : public Base64 {
public:
    std::string encode(std::string_view bytes) const override {
        // One byte more than the text, as OpenSSL adds a NUL.
        std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), unsignedBytes(bytes),
                        static_cast<int>(bytes.size()));
        text.pop_back();
        return text;
    }
};

class OpensslUuid final : public Uuid {
public:
    std::string make() const override {
        std::array<unsigned char, 16> bytes{};
        check(RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1);
        bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4: random
        bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // variant 1: RFC 4122

        std::string text;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
            appendHexadecimal(text, bytes[i]);
        }
        return text;
    }
};

}  // namespace

std::shared_ptr<Digest> makeOpensslDigest() { return std::make_shared<OpensslDigest>(); }
std::shared_ptr<Base64> makeOpensslBase64() { return std::make_shared<OpensslBase64>(); }
std::shared_ptr<Uuid> makeOpensslUuid() { return std::make_shared<OpensslUuid>(); }

}  // namespace kavio
