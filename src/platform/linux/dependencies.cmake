# The platform's dependencies: names for find_package, targets, and names for pkg-config.
set(KAVIO_PLATFORM_PACKAGES "CURL 7.88" "OpenSSL 3.0" "ICU COMPONENTS i18n uc" "SQLite3")
set(KAVIO_PLATFORM_LIBRARIES CURL::libcurl OpenSSL::SSL OpenSSL::Crypto ICU::i18n ICU::uc SQLite::SQLite3)
