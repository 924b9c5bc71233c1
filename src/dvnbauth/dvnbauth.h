// DvnBTAuthorization: the one object of a process that says who works with
// the build-time tool. It carries the user's identifier and rights (from
// DvnPersonAuth) and the user and password with which the database is
// reached. Every facade operation takes the database user from here, and the
// import and the export ask it for rights.
//
// HasUsers, IsPasswordValid and SetUser fill it from the staff tables; each
// uses a connection of its own, opened and closed within the call. Their
// messages go to the DvnMessageTarget they are given. A tombstone (a row
// whose CHECKED_OUT is 4) counts for none of them: such a person is no user
// and cannot log in, and a tombstoned role, category or person grants
// nothing. A row without a mark is live.
#pragma once

#include "dvnkernn.h"

class DvnBTAuthorization : public DvnPersonAuth {
public:
    // The one object, created at the first call. After DestroyInstance the
    // next call creates a fresh object with no user, no rights and a null
    // database user.
    static DvnBTAuthorization* GetInstance();
    // Deletes the object, if there is one. No reference to it may be used
    // afterwards.
    static void DestroyInstance();

    ~DvnBTAuthorization() override;

    DvnString DbUser() const { return m_strDbUser; }
    DvnString DbPassword() const { return m_strDbPassword; }
    // Stores both, nothing else.
    void SetDBUser(const DvnString& user, const DvnString& password);

    // True when PERSON holds at least one live row, with a key or without.
    // Connects with DbUser() and DbPassword(). dataSource is never null;
    // empty means the data source of the machine profile. False on any
    // failure (the message tells which; 51366 names the data source with its
    // passwords hidden).
    bool HasUsers(DvnMessageTarget& target, const DvnString& dataSource);

    // True when a live PERSON row has this user id (as given: the caller
    // folds it with DvnUser::FoldUserId) and the identifier of this system
    // group, and its stored password is this one: encoded with the scheme
    // and rounds that the stored form names and compared in constant time
    // (DvnUser::PasswordMatches). The password never reaches the database,
    // neither in clear nor encoded. Connects with DbUser() and DbPassword();
    // false on any failure.
    bool IsPasswordValid(DvnMessageTarget& target, const DvnString& systemGroup, const DvnString& userId,
                         const DvnString& password, const DvnString& dataSource);

    // Loads the person's rights and, when the person is found, keeps dbUser
    // and dbPassword as the database user. Every earlier right is dropped
    // first, so the object holds what the database grants this person; the
    // one exception is a person whose GLOBAL_PERS_AUTH is null: the work-item
    // rights are then not defined for that person and stay as they were.
    // When the person is not found or the database fails on the way, the
    // object stays as it was: user, rights and database user.
    void SetUser(DvnMessageTarget& target, const DvnString& systemGroup, const DvnString& userId,
                 const DvnString& dbUser, const DvnString& dbPassword, const DvnString& dataSource);

    // Every right of definition (process modelling, staff, topology), for work
    // on a repository that has no persons yet and so nobody to log in: an
    // export of it runs as an initial load does.
    void GrantDefinitionRights();

protected:
    DvnBTAuthorization();

private:
    // Reads the rights of one person into a fresh object.
    friend class DvnRightsLoader;

    DvnString m_strDbPassword;
    DvnString m_strDbUser;

    static DvnBTAuthorization* _instance;
};
