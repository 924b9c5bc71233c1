#include "cstring.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <vector>

int CString::Find(char ch, int start) const {
    if (start < 0) start = 0;
    size_t p = _s.find(ch, static_cast<size_t>(start));
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::Find(const char* sub, int start) const {
    if (!sub || start < 0) start = 0;
    size_t p = _s.find(sub ? sub : "", static_cast<size_t>(start));
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::ReverseFind(char ch) const {
    size_t p = _s.rfind(ch);
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

int CString::FindOneOf(const char* chars) const {
    size_t p = _s.find_first_of(chars ? chars : "");
    return p == std::string::npos ? -1 : static_cast<int>(p);
}

CString CString::Left(int count) const {
    if (count <= 0) return CString();
    return CString(_s.substr(0, static_cast<size_t>(count)));
}

CString CString::Mid(int first) const {
    if (first < 0) first = 0;
    if (static_cast<size_t>(first) >= _s.size()) return CString();
    return CString(_s.substr(static_cast<size_t>(first)));
}

CString CString::Mid(int first, int count) const {
    if (first < 0) first = 0;
    if (count <= 0 || static_cast<size_t>(first) >= _s.size()) return CString();
    return CString(_s.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString CString::Right(int count) const {
    if (count <= 0) return CString();
    if (static_cast<size_t>(count) >= _s.size()) return *this;
    return CString(_s.substr(_s.size() - static_cast<size_t>(count)));
}

CString& CString::MakeUpper() {
    std::transform(_s.begin(), _s.end(), _s.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return *this;
}

CString& CString::MakeLower() {
    std::transform(_s.begin(), _s.end(), _s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return *this;
}

CString& CString::TrimLeft() {
    size_t p = _s.find_first_not_of(" \t\r\n\f\v");
    _s.erase(0, p == std::string::npos ? _s.size() : p);
    return *this;
}

CString& CString::TrimRight() {
    size_t p = _s.find_last_not_of(" \t\r\n\f\v");
    _s.erase(p == std::string::npos ? 0 : p + 1);
    return *this;
}

int CString::Replace(const char* oldText, const char* newText) {
    std::string from = oldText ? oldText : "", to = newText ? newText : "";
    if (from.empty()) return 0;
    int n = 0;
    for (size_t p = _s.find(from); p != std::string::npos; p = _s.find(from, p + to.size())) {
        _s.replace(p, from.size(), to);
        ++n;
    }
    return n;
}

void CString::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CString::FormatV(const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (n < 0) { _s.clear(); return; }
    std::vector<char> buf(static_cast<size_t>(n) + 1);
    std::vsnprintf(buf.data(), buf.size(), format, args);
    _s.assign(buf.data(), static_cast<size_t>(n));
}
