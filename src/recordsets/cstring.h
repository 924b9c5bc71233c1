// CString: the text type of the recordset layer, with the operations the
// stores and loads use. Plain bytes (UTF-8 passes through untouched).
#pragma once

#include <cstdarg>
#include <ostream>
#include <string>

class CString {
public:
    CString() = default;
    CString(const char* text) : _s(text ? text : "") {}
    CString(const char* text, int length) : _s(text ? std::string(text, static_cast<size_t>(length)) : std::string()) {}
    CString(const std::string& text) : _s(text) {}
    CString(std::string&& text) : _s(std::move(text)) {}
    CString(char ch, int repeat = 1) : _s(static_cast<size_t>(repeat > 0 ? repeat : 0), ch) {}

    CString& operator=(const char* text) { _s = text ? text : ""; return *this; }
    CString& operator=(const std::string& text) { _s = text; return *this; }
    CString& operator+=(const CString& other) { _s += other._s; return *this; }
    CString& operator+=(const char* text) { if (text) _s += text; return *this; }
    CString& operator+=(char ch) { _s += ch; return *this; }

    friend CString operator+(const CString& a, const CString& b) { return CString(a._s + b._s); }
    friend CString operator+(const CString& a, const char* b) { return CString(a._s + (b ? b : "")); }
    friend CString operator+(const char* a, const CString& b) { return CString((a ? a : "") + b._s); }
    friend CString operator+(const CString& a, char b) { return CString(a._s + b); }

    friend bool operator==(const CString& a, const CString& b) { return a._s == b._s; }
    friend bool operator==(const CString& a, const char* b) { return a._s == (b ? b : ""); }
    friend bool operator!=(const CString& a, const CString& b) { return a._s != b._s; }
    friend bool operator!=(const CString& a, const char* b) { return a._s != (b ? b : ""); }
    friend bool operator<(const CString& a, const CString& b) { return a._s < b._s; }

    operator const char*() const { return _s.c_str(); }
    const char* c_str() const { return _s.c_str(); }
    const std::string& str() const { return _s; }

    int GetLength() const { return static_cast<int>(_s.size()); }
    bool IsEmpty() const { return _s.empty(); }
    void Empty() { _s.clear(); }
    char GetAt(int i) const { return _s[static_cast<size_t>(i)]; }
    char operator[](int i) const { return _s[static_cast<size_t>(i)]; }

    // -1 when not found.
    int Find(char ch, int start = 0) const;
    int Find(const char* sub, int start = 0) const;
    int ReverseFind(char ch) const;
    int FindOneOf(const char* chars) const;

    CString Left(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Right(int count) const;

    CString& MakeUpper();
    CString& MakeLower();
    CString& TrimLeft();
    CString& TrimRight();
    CString& Trim() { TrimRight(); return TrimLeft(); }
    int Replace(const char* oldText, const char* newText);

    // printf-style formatting into this string.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, va_list args);

private:
    std::string _s;
};

inline std::ostream& operator<<(std::ostream& os, const CString& s) { return os << s.str(); }
