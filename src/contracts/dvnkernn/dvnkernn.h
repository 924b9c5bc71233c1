// Kernel services: strings, trace, machine profile, person rights, messages,
// and the precondition checks. The implementation lives in siblings/dvnkernn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <iosfwd>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// ---------------------------------------------------------------------------
// DvnBinary: a shared, reference-counted byte buffer. A null value has no Rep.
class DvnBinary {
public:
    // The bytes follow the header in the same block (a model holds one
    // buffer per name, key and text value: the header is kept short, 12
    // bytes, so a buffer holds at most 2 GB).
    struct Rep {
        std::int32_t _len;
        std::int32_t _refs;
        std::int32_t _allocLen;
        static Rep* Allocate(long allocLen, long len);
        static void Deallocate(Rep* rep);
        char* Data() { return reinterpret_cast<char*>(this + 1); }
    };

    DvnBinary() : _pRep(nullptr) {}
    DvnBinary(const void* data, long len);
    DvnBinary(const DvnBinary& other);
    DvnBinary(DvnBinary&& other) noexcept : _pRep(other._pRep) { other._pRep = nullptr; }
    DvnBinary& operator=(const DvnBinary& other);
    DvnBinary& operator=(DvnBinary&& other) noexcept;
    ~DvnBinary();

    bool IsNull() const { return _pRep == nullptr; }
    void SetNull();
    long Length() const { return _pRep ? _pRep->_len : 0; }
    const char* Data() const { return _pRep ? _pRep->Data() : nullptr; }

protected:
    // Makes the buffer unshared and at least allocLen bytes large (plus room
    // for a terminating zero); keeps the current content.
    void MakeUnique(long allocLen);
    Rep* _pRep;
};

// ---------------------------------------------------------------------------
// DvnString: zero-terminated text over DvnBinary. A null string is not an
// empty one: DvnString() and DvnString(nullptr) are null, DvnString("") is empty.
class DvnString : public DvnBinary {
public:
    DvnString() = default;
    DvnString(const char* text, long len = -1, int copy = 1);
    DvnString(const std::string& text);
    DvnString(const DvnString&) = default;
    DvnString(DvnString&&) noexcept = default;
    DvnString& operator=(const DvnString&) = default;
    DvnString& operator=(DvnString&&) noexcept = default;
    DvnString& operator=(const char* text);

    // Text without its terminating zero; "" for a null string.
    const char* c_str() const { return _pRep ? _pRep->Data() : ""; }
    std::string str() const { return std::string(c_str(), static_cast<size_t>(Length())); }
    bool IsEmpty() const { return Length() == 0; }  // true for null and ""

    void Reserve(long n);
    // At most length characters from position from (the rest of the text
    // when length is negative); a null string gives a null string.
    DvnString SubString(long from, long length = -1) const;
    // The decimal number at the start of the text (after white space); 0 for
    // a null, empty or non-numeric text and for one out of the range of long.
    long AsLong() const;
    // Decimal text, padded with zeros after the sign to width characters.
    static DvnString FromLong(long value, int width = 0);
    // Puts open before and close after the text; every close inside the
    // text is doubled (so "'" gives an SQL literal).
    DvnString& Quote(const char* open, const char* close);
    DvnString& Quote(char open, char close);
    DvnString AsQuoted(const char* open, const char* close) const;
    DvnString AsQuoted(char open, char close) const;

    bool operator==(const DvnString& other) const;  // two nulls are equal; null != ""
    bool operator!=(const DvnString& other) const { return !(*this == other); }
    bool operator==(const char* other) const;
    // Byte order (unsigned); a text before a longer one it begins; null first.
    bool operator<(const DvnString& other) const {
        if (!_pRep || !other._pRep) return !_pRep && other._pRep;
        const unsigned char* a = reinterpret_cast<const unsigned char*>(_pRep->Data());
        const unsigned char* b = reinterpret_cast<const unsigned char*>(other._pRep->Data());
        long n = _pRep->_len < other._pRep->_len ? _pRep->_len : other._pRep->_len;
        for (long i = 0; i < n; ++i)
            if (a[i] != b[i]) return a[i] < b[i];
        return _pRep->_len < other._pRep->_len;
    }

    // Concatenation; neither side may be null.
    DvnString operator|(const DvnString& other) const;

    class Tokenizer {
    public:
        // Splits list at every separator; trim strips white space around a
        // token, skipEmpty passes over tokens that are then empty.
        Tokenizer(const DvnString& list, const char* separator, bool trim = true, bool skipEmpty = true);
        Tokenizer(const DvnString& list, char separator, bool trim = true, bool skipEmpty = true);
        DvnString Next();
        bool Empty() const;
    private:
        void Advance();
        std::string _list, _sep;
        bool _trim, _skipEmpty;
        size_t _pos;
        bool _has;
        std::string _nextText;
    };
};

std::ostream& operator<<(std::ostream& os, const DvnString& s);

// DvnfString: the same representation, converting to const char*.
class DvnfString : public DvnString {
public:
    using DvnString::DvnString;
    DvnfString() = default;
    DvnfString(const DvnString& s) : DvnString(s) {}
    operator const char*() const { return c_str(); }
};

// ---------------------------------------------------------------------------
// DvnTrace: switched off by default; see docs/design.md for the environment
// variables that switch it on. A caller tests the four statics first.
class DvnTrace {
public:
    static int _Level;
    static unsigned long _Components;
    static unsigned long _Categories;
    static bool _On;
    static void Trace(const char* file, int line, const char* function, int level, int category,
                      unsigned long component, const std::ostringstream& text);
    // Reads the environment (DVN_TRACE, DVN_TRACE_LEVEL, DVN_TRACE_CATEGORIES,
    // DVN_TRACE_FILE); called once automatically before main.
    static void ConfigureFromEnvironment();
    static bool Enabled(int level, int category) {
        return _Level >= level && (_Components & 0x10000UL) && (_Categories & static_cast<unsigned long>(category)) && _On;
    }
};

// DVN_TRACE(level, category, "text" << value << ...)
#define DVN_TRACE(level, category, expr)                                                   \
    do {                                                                                   \
        if (DvnTrace::Enabled((level), (category))) {                                      \
            std::ostringstream dvn_trace_os_;                                              \
            dvn_trace_os_ << expr;                                                         \
            DvnTrace::Trace(__FILE__, __LINE__, "(n/a)", (level), (category), 0x10000UL,   \
                            dvn_trace_os_);                                                \
        }                                                                                  \
    } while (0)

// ---------------------------------------------------------------------------
// Exceptions of the kernel.
class DvnException : public std::exception {
public:
    explicit DvnException(std::string what) : _what(std::move(what)) {}
    const char* what() const noexcept override { return _what.c_str(); }
private:
    std::string _what;
};

class DvnOSException : public DvnException {
public:
    DvnOSException(const DvnString& service, long returnCode, long reasonCode);
    const DvnString& ServiceName() const { return _service; }
    long ReturnCode() const { return _rc; }
    long ReasonCode() const { return _reason; }
private:
    DvnString _service;
    long _rc, _reason;
};

class DvnNoDefaultConfigException : public DvnException {
public:
    DvnNoDefaultConfigException() : DvnException("no current configuration in the machine profile") {}
};

class DvnNoSuchConfigException : public DvnException {
public:
    explicit DvnNoSuchConfigException(const DvnString& name);
};

// ---------------------------------------------------------------------------
// DvnProfile: the machine profile, a plain text file of named configurations
// (see docs/design.md for its place and format).
class DvnProfile {
public:
    DvnProfile();
    ~DvnProfile();
    // Name of the current configuration; raises DvnNoDefaultConfigException
    // when the profile names none, DvnOSException when the file is unreadable.
    DvnString CurrentConfig();
    // Opens a configuration; raises DvnNoSuchConfigException when it is not
    // there and create is false.
    void OpenConfig(const DvnString& name, bool create);
    // The value of key in the open configuration, or a null string.
    DvnString Find(const DvnString& key, bool inherit);
    // Where the profile file is (DVN_PROFILE, else $HOME/.dvnprofile).
    static std::string Path();
    // In-process values that Find returns before the file's, for every
    // profile object of the process (a command-line option such as
    // dvnbt --db sets "BTODBCDataSourceName" this way). A null value removes
    // the key. While any override is set, a missing profile file is no error:
    // CurrentConfig gives "" and only the overrides are found.
    static void SetOverride(const DvnString& key, const DvnString& value);
    static void ClearOverrides();
private:
    struct Impl;
    Impl* _impl;
};

// ---------------------------------------------------------------------------
// DvnPersonAuth: a person's identifier and build-time rights.
class DvnPersonAuth {
public:
    DvnPersonAuth();
    virtual ~DvnPersonAuth();

    const DvnString& UserID() const { return _userId; }
    const DvnString& SystemGroup() const { return _systemGroup; }
    bool AuthForTopologyWrite() const { return _topology || _systemAdmin; }
    bool AuthForProcessModeling() const { return _processModeling || _systemAdmin; }
    bool AuthForStaffWrite() const { return _staff || _systemAdmin; }

    bool IsSystemAdmin() const { return _systemAdmin; }
    bool AuthForSetAuthorization() const { return _setAuthorization; }
    bool AuthForOperation() const { return _operation; }
    bool AuthForAllProcessCategories() const { return _allCategories; }
    bool AuthForAllProcessCategoriesAsAdmin() const { return _allCategoriesAdmin; }
    bool AuthForAllWorkitems() const { return _allWorkitems; }
    bool AuthForProcessCategory(const DvnString& category) const;
    bool AuthForProcessCategoryAsAdmin(const DvnString& category) const;
    bool AuthForWorkitemsOf(const DvnString& userId) const;

protected:
    void SetUserID(const DvnString& systemGroup, const DvnString& userId);
    void SetSystemAdmin(bool v) { _systemAdmin = v; }
    void SetAuthForSetAuthorization(bool v) { _setAuthorization = v; }
    void SetAuthForOperation(bool v) { _operation = v; }
    void SetAuthForProcessModeling(bool v) { _processModeling = v; }
    void SetAuthForStaff(bool v) { _staff = v; }
    void SetAuthForTopology(bool v) { _topology = v; }
    void SetAuthForAllProcessCategories(bool v) { _allCategories = v; }
    void SetAuthForAllProcessCategoriesAsAdmin(bool v) { _allCategoriesAdmin = v; }
    void SetAuthForAllWorkitems(bool v) { _allWorkitems = v; }
    void SetAuthForProcessCategory(const DvnString& category);
    void SetAuthForProcessCategoryAsAdmin(const DvnString& category);
    void SetAuthForWorkitemsOf(const DvnString& userId);
    // Forgets every right (used before loading another user's rights).
    void ClearRights();
    // Takes over the work-item rights of another object (the all-work-items
    // flag and the persons named one by one), dropping its own.
    void CopyWorkitemRights(const DvnPersonAuth& from);

private:
    DvnString _systemGroup, _userId;
    bool _systemAdmin = false, _setAuthorization = false, _operation = false, _processModeling = false,
         _staff = false, _topology = false, _allCategories = false, _allCategoriesAdmin = false,
         _allWorkitems = false;
    std::set<std::string> _categories, _adminCategories, _workitemsOf;
};

// DvnUser: login names and the stored form of a password.
class DvnUser {
public:
    // The rounds of every new encoding.
    static constexpr int kPasswordRounds = 600000;
    // The most rounds a stored form may name; a form naming more is refused
    // by PasswordMatches rather than keep a login busy for minutes.
    static constexpr int kPasswordRoundsLimit = 10000000;

    // A login name as persons are stored and found: the ASCII letters a-z
    // become A-Z, every other byte stays as it is (digits, signs, and each
    // byte of a character outside ASCII, so UTF-8 stays intact), whatever
    // the locale of the process. A null name stays null.
    static DvnString FoldUserId(const DvnString& userId);

    // One-way, deterministic, salted with FoldUserId(userId):
    // "pbkdf2-sha256$<rounds>$<64 hex digits>" with kPasswordRounds. The
    // result is printable text shorter than 255 characters.
    static DvnString PasswordEncodeAsString(const DvnString& userId, const DvnString& password);
    // The same with the rounds given (at least 1).
    static DvnString PasswordEncodeWithRounds(const DvnString& userId, const DvnString& password, int rounds);
    // Whether password is the one whose stored form is `stored`: encoded
    // with the scheme and rounds that `stored` names and compared in a time
    // that does not depend on where the two differ. False for a null or
    // unknown form, or one naming more than kPasswordRoundsLimit rounds.
    static bool PasswordMatches(const DvnString& userId, const DvnString& password, const DvnString& stored);
};

// ---------------------------------------------------------------------------
// Messages outside the core model. DvnMessageIF is where a numbered message
// with one argument goes; DvnMessageTarget keeps what it received (and can
// hand each message on to a listener, such as the command line's printer).
class DvnMessageIF {
public:
    virtual ~DvnMessageIF() = default;
    virtual void Message(long number, const DvnString& argument) = 0;
};

class DvnMessageTarget : public DvnMessageIF {
public:
    struct Entry {
        long number;
        DvnString argument;
    };
    void Message(long number, const DvnString& argument) override;
    const std::vector<Entry>& Messages() const { return _messages; }
    void Clear() { _messages.clear(); }
    // Called with every message as it arrives.
    void SetListener(std::function<void(long, const DvnString&)> listener) { _listener = std::move(listener); }
private:
    std::vector<Entry> _messages;
    std::function<void(long, const DvnString&)> _listener;
};

// ---------------------------------------------------------------------------
// Preconditions and invariants: for programming errors only. A broken one
// prints the text with file and line on standard error and aborts.
[[noreturn]] void dvnkFail(const char* kind, const char* text, const char* file, int line);
inline void dvnkRequire(bool condition, const char* text, const char* file, int line) {
    if (!condition) dvnkFail("precondition", text, file, line);
}
inline void dvnkInvariant(bool condition, const char* text, const char* file, int line) {
    if (!condition) dvnkFail("invariant", text, file, line);
}
// The forms for a caller that has tested the condition itself:
//     if (person == 0) dvnkRequire("person != 0", __FILE__, __LINE__);
[[noreturn]] inline void dvnkRequire(const char* text, const char* file, int line) {
    dvnkFail("precondition", text, file, line);
}
[[noreturn]] inline void dvnkInvariant(const char* text, const char* file, int line) {
    dvnkFail("invariant", text, file, line);
}
#define DVNK_REQUIRE(cond, text) dvnkRequire((cond), (text), __FILE__, __LINE__)
#define DVNK_INVARIANT(cond, text) dvnkInvariant((cond), (text), __FILE__, __LINE__)
