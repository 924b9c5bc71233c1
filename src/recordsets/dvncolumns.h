// One description per table: a column list macro COLS(C) that calls
// C(KIND, NAME) once per column, in exchange order. From it come the public
// members (m_NAME), the DoFieldExchange calls and the field count, so that
// the three can never disagree; the data definition is built from the
// exchange itself (dvnschema.cpp).
//
// Kinds: TEXT (255, SQL_VARCHAR), LTEXT (4097, SQL_LONGVARCHAR: conditions,
// filters), CTEXT (32672, SQL_LONGVARCHAR: container values), DOC (long text
// without a limit: documentation, copied whole), LONG, INT.
#pragma once

#include "odbcframe.h"

#define DVN_CTYPE_TEXT CString
#define DVN_CTYPE_LTEXT CString
#define DVN_CTYPE_CTEXT CString
#define DVN_CTYPE_DOC CString
#define DVN_CTYPE_LONG long
#define DVN_CTYPE_INT int

#define DVN_RFX_TEXT(pFX, name, member) RFX_Text(pFX, name, member, 255, SQL_VARCHAR, 0)
#define DVN_RFX_LTEXT(pFX, name, member) RFX_Text(pFX, name, member, 4097, SQL_LONGVARCHAR, 0)
#define DVN_RFX_CTEXT(pFX, name, member) RFX_Text(pFX, name, member, 32672, SQL_LONGVARCHAR, 0)
// A maximum length of 0 is no limit: the column is unbounded text on both databases.
#define DVN_RFX_DOC(pFX, name, member) RFX_Text(pFX, name, member, 0, SQL_LONGVARCHAR, 0)
#define DVN_RFX_LONG(pFX, name, member) RFX_Long(pFX, name, member)
#define DVN_RFX_INT(pFX, name, member) RFX_Int(pFX, name, member)

// Members start empty or 0.
#define DVN_MEMBER(kind, col) DVN_CTYPE_##kind m_##col{};
#define DVN_EXCHANGE(kind, col) DVN_RFX_##kind(pFX, "[" #col "]", m_##col);
#define DVN_COUNT(kind, col) +1

// Inside a class body: the members of a column list.
#define DVN_DECLARE_COLUMNS(COLS) COLS(DVN_MEMBER)
// The number of columns of a list.
#define DVN_COLUMN_COUNT(COLS) (0 COLS(DVN_COUNT))
// The exchange calls of a list (pFX in scope).
#define DVN_EXCHANGE_COLUMNS(COLS) COLS(DVN_EXCHANGE)

// The frame of a class that derives from CRecordset directly: constructor
// and DoFieldExchange over one column list; the default statement names the
// table in the flat form.
#define DVN_IMPLEMENT_RECORDSET(Class, COLS, table)                                     \
    Class::Class(CDatabase* pDatabase) : CRecordset(pDatabase) {                        \
        m_nFields = DVN_COLUMN_COUNT(COLS);                                             \
        m_nDefaultType = snapshot;                                                      \
    }                                                                                   \
    void Class::DoFieldExchange(CFieldExchange* pFX) {                                  \
        pFX->SetFieldType(CFieldExchange::outputColumn);                                \
        DVN_EXCHANGE_COLUMNS(COLS)                                                      \
    }                                                                                   \
    CString Class::GetDefaultSQL() { return "[DVBT_" table "]"; }

// A class over an intermediate base: its own columns first, the base's last.
#define DVN_IMPLEMENT_DERIVED(Class, Base, COLS, table)                                 \
    Class::Class(CDatabase* pDatabase) : Base(pDatabase) {                              \
        m_nFields += DVN_COLUMN_COUNT(COLS);                                            \
    }                                                                                   \
    void Class::DoFieldExchange(CFieldExchange* pFX) {                                  \
        pFX->SetFieldType(CFieldExchange::outputColumn);                                \
        DVN_EXCHANGE_COLUMNS(COLS)                                                      \
        Base::DoFieldExchange(pFX);                                                     \
    }                                                                                   \
    CString Class::GetDefaultSQL() { return "[DVBT_" table "]"; }

// A class over an intermediate base whose columns come first.
#define DVN_IMPLEMENT_BASE_FIRST(Class, Base, COLS, table)                              \
    Class::Class(CDatabase* pDatabase) : Base(pDatabase) {                              \
        m_nFields += DVN_COLUMN_COUNT(COLS);                                            \
    }                                                                                   \
    void Class::DoFieldExchange(CFieldExchange* pFX) {                                  \
        Base::DoFieldExchange(pFX);                                                     \
        DVN_EXCHANGE_COLUMNS(COLS)                                                      \
    }                                                                                   \
    CString Class::GetDefaultSQL() { return "[DVBT_" table "]"; }

// A class whose own columns stand between the head and the tail of its
// base's columns (the base offers ExchangeHead and ExchangeTail).
#define DVN_IMPLEMENT_BETWEEN(Class, Base, COLS, table)                                 \
    Class::Class(CDatabase* pDatabase) : Base(pDatabase) {                              \
        m_nFields += DVN_COLUMN_COUNT(COLS);                                            \
    }                                                                                   \
    void Class::DoFieldExchange(CFieldExchange* pFX) {                                  \
        ExchangeHead(pFX);                                                              \
        DVN_EXCHANGE_COLUMNS(COLS)                                                      \
        ExchangeTail(pFX);                                                              \
    }                                                                                   \
    CString Class::GetDefaultSQL() { return "[DVBT_" table "]"; }

// The declarations every recordset class carries.
#define DVN_DECLARE_RECORDSET(Class, COLS)                                              \
public:                                                                                 \
    explicit Class(CDatabase* pDatabase);                                               \
    DVN_DECLARE_COLUMNS(COLS)                                                           \
    void DoFieldExchange(CFieldExchange* pFX) override;                                 \
    CString GetDefaultSQL() override;
