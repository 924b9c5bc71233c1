#include "dvnbauth.h"

DvnBTAuthorization* DvnBTAuthorization::_instance = nullptr;

DvnBTAuthorization::DvnBTAuthorization() = default;

DvnBTAuthorization::~DvnBTAuthorization() = default;

DvnBTAuthorization* DvnBTAuthorization::GetInstance() {
    if (_instance == nullptr) _instance = new DvnBTAuthorization();
    return _instance;
}

void DvnBTAuthorization::DestroyInstance() {
    delete _instance;
    _instance = nullptr;
}

void DvnBTAuthorization::SetDBUser(const DvnString& user, const DvnString& password) {
    m_strDbUser = user;
    m_strDbPassword = password;
}

