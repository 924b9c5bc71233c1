// Shared, counted byte buffers and the text string built on them.
#include "dvnkernn.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>
#include <stdexcept>

// --------------------------------------------------------------------- Rep
// The header and the bytes share one allocation: a string costs one call of
// the allocator, not two.
DvnBinary::Rep* DvnBinary::Rep::Allocate(long allocLen, long len) {
    dvnkRequire(len >= 0, "a buffer length is not negative", __FILE__, __LINE__);
    if (allocLen < len) allocLen = len;
    if (allocLen > INT32_MAX - static_cast<long>(sizeof(Rep)) - 1) throw std::length_error("buffer above 2 GB");
    void* block = ::operator new(sizeof(Rep) + static_cast<size_t>(allocLen) + 1);
    Rep* rep = new (block) Rep;
    rep->Data()[len] = '\0';
    rep->_len = static_cast<std::int32_t>(len);
    rep->_refs = 1;
    rep->_allocLen = static_cast<std::int32_t>(allocLen);
    return rep;
}

void DvnBinary::Rep::Deallocate(Rep* rep) {
    if (!rep) return;
    rep->~Rep();
    ::operator delete(rep);
}

// --------------------------------------------------------------- DvnBinary
DvnBinary::DvnBinary(const void* data, long len) : _pRep(nullptr) {
    if (!data) return;
    _pRep = Rep::Allocate(len, len);
    if (len > 0) std::memcpy(_pRep->Data(), data, static_cast<size_t>(len));
}

DvnBinary::DvnBinary(const DvnBinary& other) : _pRep(other._pRep) {
    if (_pRep) ++_pRep->_refs;
}

DvnBinary& DvnBinary::operator=(const DvnBinary& other) {
    if (other._pRep) ++other._pRep->_refs;
    SetNull();
    _pRep = other._pRep;
    return *this;
}

DvnBinary& DvnBinary::operator=(DvnBinary&& other) noexcept {
    if (this != &other) {
        SetNull();
        _pRep = other._pRep;
        other._pRep = nullptr;
    }
    return *this;
}

DvnBinary::~DvnBinary() { SetNull(); }

void DvnBinary::SetNull() {
    if (_pRep && --_pRep->_refs == 0) Rep::Deallocate(_pRep);
    _pRep = nullptr;
}

void DvnBinary::MakeUnique(long allocLen) {
    long len = _pRep ? _pRep->_len : 0;
    if (allocLen < len) allocLen = len;
    if (_pRep && _pRep->_refs == 1 && _pRep->_allocLen >= allocLen) return;
    Rep* rep = Rep::Allocate(allocLen, len);
    if (_pRep && len > 0) std::memcpy(rep->Data(), _pRep->Data(), static_cast<size_t>(len));
    SetNull();
    _pRep = rep;
}

// --------------------------------------------------------------- DvnString
DvnString::DvnString(const char* text, long len, int /*copy*/) {
    if (!text) return;
    if (len < 0) len = static_cast<long>(std::strlen(text));
    _pRep = Rep::Allocate(len, len);
    if (len > 0) std::memcpy(_pRep->Data(), text, static_cast<size_t>(len));
}

DvnString::DvnString(const std::string& text) : DvnString(text.data(), static_cast<long>(text.size())) {}

DvnString& DvnString::operator=(const char* text) {
    *this = DvnString(text);
    return *this;
}

void DvnString::Reserve(long n) { MakeUnique(n); }

DvnString DvnString::SubString(long from, long length) const {
    if (!_pRep) return DvnString();
    long len = _pRep->_len;
    if (from < 0) from = 0;
    if (from > len) from = len;
    if (length < 0 || length > len - from) length = len - from;
    return DvnString(_pRep->Data() + from, length);
}

long DvnString::AsLong() const {
    if (!_pRep) return 0;
    errno = 0;
    long long v = std::strtoll(_pRep->Data(), nullptr, 10);
    if (errno == ERANGE || v > LONG_MAX || v < LONG_MIN) return 0;
    return static_cast<long>(v);
}

DvnString DvnString::FromLong(long value, int width) {
    std::string s = std::to_string(value);
    if (width > 0 && static_cast<int>(s.size()) < width) {
        bool neg = value < 0;
        std::string digits = neg ? s.substr(1) : s;
        digits.insert(0, static_cast<size_t>(width - static_cast<int>(s.size())), '0');
        s = neg ? "-" + digits : digits;
    }
    return DvnString(s);
}

static std::string quoted(const std::string& text, const std::string& open, const std::string& close) {
    std::string out = open;
    if (close.empty()) return out + text;
    size_t pos = 0;
    for (;;) {
        size_t hit = text.find(close, pos);
        if (hit == std::string::npos) break;
        out.append(text, pos, hit + close.size() - pos);
        out += close;
        pos = hit + close.size();
    }
    out.append(text, pos, std::string::npos);
    return out + close;
}

DvnString& DvnString::Quote(const char* open, const char* close) {
    *this = DvnString(quoted(str(), open ? open : "", close ? close : ""));
    return *this;
}

DvnString& DvnString::Quote(char open, char close) {
    const char o[2] = {open, 0}, c[2] = {close, 0};
    return Quote(o, c);
}

DvnString DvnString::AsQuoted(const char* open, const char* close) const {
    DvnString copy(*this);
    return copy.Quote(open, close);
}

DvnString DvnString::AsQuoted(char open, char close) const {
    DvnString copy(*this);
    return copy.Quote(open, close);
}

bool DvnString::operator==(const DvnString& other) const {
    if (IsNull() || other.IsNull()) return IsNull() && other.IsNull();
    return Length() == other.Length() && std::memcmp(Data(), other.Data(), static_cast<size_t>(Length())) == 0;
}

bool DvnString::operator==(const char* other) const {
    if (!other || IsNull()) return !other && IsNull();
    return std::strlen(other) == static_cast<size_t>(Length()) && std::memcmp(Data(), other, static_cast<size_t>(Length())) == 0;
}

DvnString DvnString::operator|(const DvnString& other) const {
    dvnkRequire(!IsNull() && !other.IsNull(), "neither side of | may be null", __FILE__, __LINE__);
    DvnString out;
    long a = Length(), b = other.Length();
    out._pRep = Rep::Allocate(a + b, a + b);
    if (a) std::memcpy(out._pRep->Data(), Data(), static_cast<size_t>(a));
    if (b) std::memcpy(out._pRep->Data() + a, other.Data(), static_cast<size_t>(b));
    return out;
}

std::ostream& operator<<(std::ostream& os, const DvnString& s) {
    return os.write(s.c_str(), static_cast<std::streamsize>(s.Length()));
}

// --------------------------------------------------------------- Tokenizer
DvnString::Tokenizer::Tokenizer(const DvnString& list, const char* separator, bool trim, bool skipEmpty)
    : _list(list.str()), _sep(separator && *separator ? separator : ","), _trim(trim), _skipEmpty(skipEmpty), _pos(0),
      _has(false) {
    if (!list.IsNull()) Advance();
}

DvnString::Tokenizer::Tokenizer(const DvnString& list, char separator, bool trim, bool skipEmpty)
    : Tokenizer(list, std::string(1, separator).c_str(), trim, skipEmpty) {}

void DvnString::Tokenizer::Advance() {
    _has = false;
    while (_pos <= _list.size()) {
        size_t hit = _list.find(_sep, _pos);
        size_t end = hit == std::string::npos ? _list.size() : hit;
        std::string token = _list.substr(_pos, end - _pos);
        _pos = hit == std::string::npos ? _list.size() + 1 : hit + _sep.size();
        if (_trim) {
            size_t b = token.find_first_not_of(" \t\r\n");
            size_t e = token.find_last_not_of(" \t\r\n");
            token = b == std::string::npos ? std::string() : token.substr(b, e - b + 1);
        }
        if (_skipEmpty && token.empty()) continue;
        _nextText = token;
        _has = true;
        return;
    }
}

DvnString DvnString::Tokenizer::Next() {
    if (!_has) return DvnString();
    DvnString out(_nextText);
    Advance();
    return out;
}

bool DvnString::Tokenizer::Empty() const { return !_has; }
