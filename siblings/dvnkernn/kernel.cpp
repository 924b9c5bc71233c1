// Trace, profile, person rights, password encoding, messages, preconditions.
#include "dvnkernn.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>

// ====================================================================== trace
int DvnTrace::_Level = 0;
unsigned long DvnTrace::_Components = 0;
unsigned long DvnTrace::_Categories = 0;
bool DvnTrace::_On = false;

namespace {

std::FILE* g_traceFile = nullptr;  // null: standard error
std::mutex g_traceMutex;

const char* Env(const char* name) {
    const char* v = std::getenv(name);
    return v && *v ? v : nullptr;
}

unsigned long ParseNumber(const char* text, unsigned long fallback) {
    if (!text) return fallback;
    char* end = nullptr;
    errno = 0;
    unsigned long v = std::strtoul(text, &end, 0);  // decimal or 0x...
    return errno || end == text ? fallback : v;
}

struct TraceSetup {
    TraceSetup() { DvnTrace::ConfigureFromEnvironment(); }
    ~TraceSetup() {
        if (g_traceFile) std::fclose(g_traceFile);
        g_traceFile = nullptr;
    }
} g_traceSetup;

}  // namespace

void DvnTrace::ConfigureFromEnvironment() {
    std::lock_guard<std::mutex> lock(g_traceMutex);
    const char* on = Env("DVN_TRACE");
    _On = on && std::strcmp(on, "0") != 0;
    _Level = static_cast<int>(ParseNumber(Env("DVN_TRACE_LEVEL"), _On ? 3 : 0));
    _Categories = ParseNumber(Env("DVN_TRACE_CATEGORIES"), _On ? 0xFFFFFFFFUL : 0);
    _Components = _On ? 0xFFFFFFFFUL : 0;
    if (g_traceFile) std::fclose(g_traceFile);
    g_traceFile = nullptr;
    if (const char* file = Env("DVN_TRACE_FILE")) {
        g_traceFile = std::fopen(file, "a");
        if (!g_traceFile) std::fprintf(stderr, "dvnkernn: cannot open trace file %s: %s\n", file, std::strerror(errno));
    }
}

void DvnTrace::Trace(const char* file, int line, const char* function, int level, int category,
                     unsigned long component, const std::ostringstream& text) {
    std::lock_guard<std::mutex> lock(g_traceMutex);
    std::FILE* out = g_traceFile ? g_traceFile : stderr;
    const char* base = file ? std::strrchr(file, '/') : nullptr;
    std::fprintf(out, "[trace %d/%d/0x%lx] %s:%d %s: %s\n", level, category, component, base ? base + 1 : (file ? file : "?"),
                 line, function ? function : "(n/a)", text.str().c_str());
    std::fflush(out);
}

// ================================================================= exceptions
namespace {
std::string ServiceText(const DvnString& service, long rc, long reason) {
    return "operating system service failed: " + service.str() + " (rc=" + std::to_string(rc) +
           ", reason=" + std::to_string(reason) + ")";
}
}  // namespace

DvnOSException::DvnOSException(const DvnString& service, long returnCode, long reasonCode)
    : DvnException(ServiceText(service, returnCode, reasonCode)), _service(service), _rc(returnCode),
      _reason(reasonCode) {}

DvnNoSuchConfigException::DvnNoSuchConfigException(const DvnString& name)
    : DvnException("no configuration '" + name.str() + "' in the machine profile") {}

// ==================================================================== profile
// The file holds lines "key = value". Lines before the first section may
// set "current" (the current configuration); "[NAME]" opens a configuration.
// '#' and ';' start comment lines. Keys compare without regard to case.
namespace {

std::string Trim(const std::string& s) {
    size_t b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos) return std::string();
    return s.substr(b, s.find_last_not_of(" \t\r\n") - b + 1);
}

std::string Lower(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::map<std::string, std::string>& Overrides() {
    static std::map<std::string, std::string> overrides;
    return overrides;
}

}  // namespace

struct DvnProfile::Impl {
    bool loaded = false;
    bool fileMissing = false;
    std::string current;
    std::map<std::string, std::map<std::string, std::string>> configs;  // lower-case name -> key -> value
    std::map<std::string, std::string>* open = nullptr;

    void Load() {
        if (loaded) return;
        std::string path = DvnProfile::Path();
        std::ifstream in(path);
        if (!in) {
            int err = errno;
            if (!Overrides().empty()) {  // the process supplies what it needs
                fileMissing = true;
                loaded = true;
                return;
            }
            throw DvnOSException(DvnString("open " + path), err ? err : ENOENT, 0);
        }
        std::string line, section;
        bool inSection = false;
        while (std::getline(in, line)) {
            std::string t = Trim(line);
            if (t.empty() || t[0] == '#' || t[0] == ';') continue;
            if (t.front() == '[' && t.back() == ']') {
                section = Lower(Trim(t.substr(1, t.size() - 2)));
                configs[section];
                inSection = true;
                continue;
            }
            size_t eq = t.find('=');
            if (eq == std::string::npos) continue;
            std::string key = Lower(Trim(t.substr(0, eq))), value = Trim(t.substr(eq + 1));
            if (!inSection) {
                if (key == "current") current = value;
            } else {
                configs[section][key] = value;
            }
        }
        loaded = true;
    }
};

DvnProfile::DvnProfile() : _impl(new Impl) {}
DvnProfile::~DvnProfile() { delete _impl; }

std::string DvnProfile::Path() {
    if (const char* p = Env("DVN_PROFILE")) return p;
    const char* home = Env("HOME");
    return std::string(home ? home : ".") + "/.dvnprofile";
}

void DvnProfile::SetOverride(const DvnString& key, const DvnString& value) {
    if (value.IsNull())
        Overrides().erase(Lower(key.str()));
    else
        Overrides()[Lower(key.str())] = value.str();
}

void DvnProfile::ClearOverrides() { Overrides().clear(); }

DvnString DvnProfile::CurrentConfig() {
    _impl->Load();
    if (_impl->fileMissing) return DvnString("");
    if (_impl->current.empty()) throw DvnNoDefaultConfigException();
    return DvnString(_impl->current);
}

void DvnProfile::OpenConfig(const DvnString& name, bool create) {
    _impl->Load();
    _impl->open = nullptr;
    if (_impl->fileMissing && name.IsEmpty()) return;
    auto it = _impl->configs.find(Lower(name.str()));
    if (it == _impl->configs.end()) {
        if (!create) throw DvnNoSuchConfigException(name);
        it = _impl->configs.emplace(Lower(name.str()), std::map<std::string, std::string>()).first;
    }
    _impl->open = &it->second;
}

DvnString DvnProfile::Find(const DvnString& key, bool) {
    std::string k = Lower(key.str());
    auto o = Overrides().find(k);
    if (o != Overrides().end()) return DvnString(o->second);
    if (!_impl->open) return DvnString();
    auto it = _impl->open->find(k);
    return it == _impl->open->end() ? DvnString() : DvnString(it->second);
}

// ================================================================ person rights
DvnPersonAuth::DvnPersonAuth() = default;
DvnPersonAuth::~DvnPersonAuth() = default;

void DvnPersonAuth::SetUserID(const DvnString& systemGroup, const DvnString& userId) {
    _systemGroup = systemGroup;
    _userId = userId;
}

bool DvnPersonAuth::AuthForProcessCategory(const DvnString& category) const {
    return _allCategories || _systemAdmin || _categories.count(category.str()) > 0 ||
           AuthForProcessCategoryAsAdmin(category);
}
bool DvnPersonAuth::AuthForProcessCategoryAsAdmin(const DvnString& category) const {
    return _allCategoriesAdmin || _systemAdmin || _adminCategories.count(category.str()) > 0;
}
bool DvnPersonAuth::AuthForWorkitemsOf(const DvnString& userId) const {
    return _allWorkitems || _systemAdmin || _workitemsOf.count(userId.str()) > 0;
}
void DvnPersonAuth::SetAuthForProcessCategory(const DvnString& category) { _categories.insert(category.str()); }
void DvnPersonAuth::SetAuthForProcessCategoryAsAdmin(const DvnString& category) {
    _adminCategories.insert(category.str());
}
void DvnPersonAuth::SetAuthForWorkitemsOf(const DvnString& userId) { _workitemsOf.insert(userId.str()); }

void DvnPersonAuth::ClearRights() {
    _systemAdmin = _setAuthorization = _operation = _processModeling = _staff = _topology = _allCategories =
        _allCategoriesAdmin = _allWorkitems = false;
    _categories.clear();
    _adminCategories.clear();
    _workitemsOf.clear();
}

void DvnPersonAuth::CopyWorkitemRights(const DvnPersonAuth& from) {
    _allWorkitems = from._allWorkitems;
    _workitemsOf = from._workitemsOf;
}

// ============================================================ password encoding
// PBKDF2-HMAC-SHA256, salted with the folded user id; the stored form names
// the scheme and the rounds, so that a form of another count (older ones
// have 2048) is still read, and a later scheme can be told apart.
namespace {

const char kPasswordScheme[] = "pbkdf2-sha256$";

std::string Pbkdf2Hex(const DvnString& userId, const DvnString& password, int rounds) {
    const std::string salt = DvnUser::FoldUserId(userId).str();
    unsigned char key[32];
    const std::string pwd = password.str();
    if (rounds < 1 ||
        PKCS5_PBKDF2_HMAC(pwd.data(), static_cast<int>(pwd.size()), reinterpret_cast<const unsigned char*>(salt.data()),
                          static_cast<int>(salt.size()), rounds, EVP_sha256(), sizeof key, key) != 1)
        throw DvnOSException(DvnString("PKCS5_PBKDF2_HMAC"), -1, 0);
    static const char* hex = "0123456789abcdef";
    std::string out;
    for (unsigned char b : key) {
        out += hex[b >> 4];
        out += hex[b & 15];
    }
    OPENSSL_cleanse(key, sizeof key);
    return out;
}

}  // namespace

DvnString DvnUser::FoldUserId(const DvnString& userId) {
    if (userId.IsNull()) return userId;
    std::string folded = userId.str();
    for (char& c : folded)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return DvnString(folded);
}

DvnString DvnUser::PasswordEncodeAsString(const DvnString& userId, const DvnString& password) {
    return PasswordEncodeWithRounds(userId, password, kPasswordRounds);
}

DvnString DvnUser::PasswordEncodeWithRounds(const DvnString& userId, const DvnString& password, int rounds) {
    return DvnString(kPasswordScheme + std::to_string(rounds) + "$" + Pbkdf2Hex(userId, password, rounds));
}

bool DvnUser::PasswordMatches(const DvnString& userId, const DvnString& password, const DvnString& stored) {
    if (stored.IsNull()) return false;
    const std::string form = stored.str();
    const size_t schemeLength = sizeof kPasswordScheme - 1;
    if (form.compare(0, schemeLength, kPasswordScheme) != 0) return false;
    const size_t dollar = form.find('$', schemeLength);
    if (dollar == std::string::npos || dollar == schemeLength || dollar - schemeLength > 8) return false;
    long rounds = 0;
    for (size_t i = schemeLength; i < dollar; ++i) {
        if (form[i] < '0' || form[i] > '9') return false;
        rounds = rounds * 10 + (form[i] - '0');
    }
    std::string digest = form.substr(dollar + 1);
    for (char& c : digest)
        if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    if (rounds < 1 || rounds > kPasswordRoundsLimit || digest.size() != 64) return false;
    const std::string mine = Pbkdf2Hex(userId, password, static_cast<int>(rounds));
    return CRYPTO_memcmp(mine.data(), digest.data(), digest.size()) == 0;
}

// ===================================================================== messages
void DvnMessageTarget::Message(long number, const DvnString& argument) {
    _messages.push_back(Entry{number, argument});
    if (_listener) _listener(number, argument);
}

// ================================================================ preconditions
void dvnkFail(const char* kind, const char* text, const char* file, int line) {
    std::fprintf(stderr, "%s failed: %s (%s:%d)\n", kind, text ? text : "", file ? file : "?", line);
    std::abort();
}
