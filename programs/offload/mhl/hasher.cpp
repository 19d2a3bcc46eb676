// SPDX-FileCopyrightText: 2026 The NQP2ParserU authors
// SPDX-License-Identifier: MIT

#include "offload/mhl/hash_format.h"

#include <cstdlib>
#include <iterator>
#include <memory>
#include <new>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <stdexcept>
#include <utility>
#include <vector>
#include <xxhash.h>

namespace nqp2::mhl {

/// One format's way from bytes to a digest.
class Method {
public:
    virtual ~Method() = default;
    virtual void Add(std::string_view bytes) = 0;
    /// The digest, and a new beginning.
    virtual void Take(HashFormat format, Hashes& hashes) = 0;
};

namespace {

struct FreeXxh3 {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
};
struct FreeXxh64 {
    void operator()(XXH64_state_t* state) const { XXH64_freeState(state); }
};
struct FreeDigestContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
struct FreeDigestMethod {
    void operator()(EVP_MD* method) const { EVP_MD_free(method); }
};

template <class Canonical>
std::string_view DigestOf(const Canonical& canonical) {
    return {reinterpret_cast<const char*>(canonical.digest), std::size(canonical.digest)};
}

template <class Pointer>
Pointer Required(Pointer pointer) {
    if (pointer == nullptr) {
        throw std::bad_alloc();
    }
    return pointer;
}

class Xxh3 final : public Method {
public:
    explicit Xxh3(HashFormat format) : m_isWide(format == HashFormat::Xxh128) { Begin(); }
    void Add(std::string_view bytes) override {
        if (m_isWide) {
            XXH3_128bits_update(m_state.get(), bytes.data(), bytes.size());
        } else {
            XXH3_64bits_update(m_state.get(), bytes.data(), bytes.size());
        }
    }
    void Take(HashFormat format, Hashes& hashes) override {
        if (m_isWide) {
            XXH128_canonical_t canonical;
            XXH128_canonicalFromHash(&canonical, XXH3_128bits_digest(m_state.get()));
            hashes.Set(format, DigestOf(canonical));
        } else {
            XXH64_canonical_t canonical;
            XXH64_canonicalFromHash(&canonical, XXH3_64bits_digest(m_state.get()));
            hashes.Set(format, DigestOf(canonical));
        }
        Begin();
    }

private:
    void Begin() {
        if (m_isWide) {
            XXH3_128bits_reset(m_state.get());
        } else {
            XXH3_64bits_reset(m_state.get());
        }
    }

    bool m_isWide;
    std::unique_ptr<XXH3_state_t, FreeXxh3> m_state{Required(XXH3_createState())};
};

class Xxh64 final : public Method {
public:
    Xxh64() { XXH64_reset(m_state.get(), 0); }
    void Add(std::string_view bytes) override {
        XXH64_update(m_state.get(), bytes.data(), bytes.size());
    }
    void Take(HashFormat format, Hashes& hashes) override {
        XXH64_canonical_t canonical;
        XXH64_canonicalFromHash(&canonical, XXH64_digest(m_state.get()));
        hashes.Set(format, DigestOf(canonical));
        XXH64_reset(m_state.get(), 0);
    }

private:
    std::unique_ptr<XXH64_state_t, FreeXxh64> m_state{Required(XXH64_createState())};
};

using DigestMethod = std::unique_ptr<EVP_MD, FreeDigestMethod>;

/// Finding one by its name takes longer than a small file. The library begins its work with the
/// first one, and does not check then that it gets all the memory it asks for.
DigestMethod Find(const char* name) {
    constexpr std::size_t kStock = std::size_t{1} << 20U;
    // Such a pair is not left out, and no other way to ask for memory is the library's.
    void* const volatile stock = std::malloc(kStock); // NOLINT(cppcoreguidelines-no-malloc)
    std::free(Required(stock));                       // NOLINT(cppcoreguidelines-no-malloc)
    DigestMethod method(EVP_MD_fetch(nullptr, name, nullptr));
    if (method == nullptr) {
        if (ERR_GET_REASON(ERR_peek_last_error()) == ERR_R_MALLOC_FAILURE) {
            throw std::bad_alloc();
        }
        throw std::runtime_error(std::string("the cryptographic library gives no ") + name);
    }
    return method;
}

/// Found once.
const EVP_MD* Sha512() {
    static const DigestMethod method = Find("SHA512");
    return method.get();
}
const EVP_MD* Md5() {
    static const DigestMethod method = Find("MD5");
    return method.get();
}
const EVP_MD* Sha1() {
    static const DigestMethod method = Find("SHA1");
    return method.get();
}

/// A digest of the cryptographic library.
class Cryptographic final : public Method {
public:
    explicit Cryptographic(const EVP_MD* method) : m_context(Required(EVP_MD_CTX_new())) {
        Check(EVP_DigestInit_ex(m_context.get(), method, nullptr));
    }
    void Add(std::string_view bytes) override {
        Check(EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()));
    }
    void Take(HashFormat format, Hashes& hashes) override {
        std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
        unsigned size = 0;
        Check(EVP_DigestFinal_ex(m_context.get(), digest.data(), &size));
        Check(static_cast<int>(size == FactsOf(format).bytes));
        hashes.Set(format, {reinterpret_cast<const char*>(digest.data()), size});
        Check(EVP_DigestInit_ex(m_context.get(), nullptr, nullptr));
    }

private:
    static void Check(int result) {
        if (result != 1) {
            if (ERR_GET_REASON(ERR_peek_last_error()) == ERR_R_MALLOC_FAILURE) {
                throw std::bad_alloc();
            }
            throw std::runtime_error("the cryptographic library failed");
        }
    }

    std::unique_ptr<EVP_MD_CTX, FreeDigestContext> m_context;
};

std::unique_ptr<Method> MethodOf(HashFormat format) {
    switch (format) {
    case HashFormat::C4:
        return std::make_unique<Cryptographic>(Sha512());
    case HashFormat::Md5:
        return std::make_unique<Cryptographic>(Md5());
    case HashFormat::Sha1:
        return std::make_unique<Cryptographic>(Sha1());
    case HashFormat::Xxh64:
        return std::make_unique<Xxh64>();
    case HashFormat::Xxh128:
    case HashFormat::Xxh3:
        break;
    }
    return std::make_unique<Xxh3>(format);
}

} // namespace

struct Hasher::State {
    std::vector<std::pair<HashFormat, std::unique_ptr<Method>>> methods;
};

Hasher::Hasher(FormatSet formats) : m_formats(formats), m_state(std::make_unique<State>()) {
    for (const HashFormatFacts& each : kHashFormats) {
        if (formats.Has(each.format)) {
            m_state->methods.emplace_back(each.format, MethodOf(each.format));
        }
    }
}

Hasher::~Hasher() = default;
Hasher::Hasher(Hasher&& other) noexcept = default;
Hasher& Hasher::operator=(Hasher&& other) noexcept = default;

void Hasher::Add(std::string_view bytes) {
    for (const auto& [format, method] : m_state->methods) {
        method->Add(bytes);
    }
}

Hashes Hasher::Value() {
    Hashes hashes;
    for (const auto& [format, method] : m_state->methods) {
        method->Take(format, hashes);
    }
    return hashes;
}

} // namespace nqp2::mhl
