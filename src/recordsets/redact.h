// The one way in which a text that may hold a database password is made fit
// to print: command output, messages, traces and error texts. Every place
// that prints a connect string, a data source or a driver's error text about
// a connection goes through RedactPassword.
#pragma once

#include "cstring.h"

// What a password is replaced by.
inline constexpr const char* kRedactedPassword = "********";

// text with the value of every attribute whose key ends in PWD or PASSWORD,
// in any case (PWD=, pwd=, Password=, PASSWORD=, SSLPassword=, a value in
// braces too) replaced by "********", and every other occurrence in text of
// such a value, found in text or in connect, replaced too: a driver may quote
// the password bare in an error text about the connect string `connect`.
// An attribute without a value is left as it is.
CString RedactPassword(const CString& text, const CString& connect = CString());

// "********" for a password that is not empty, else the empty text: for a
// trace that says whether a password was given.
CString MaskedPassword(const CString& password);
