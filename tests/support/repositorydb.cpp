#include "repositorydb.h"

#include "dvnbdbif.h"
#include "dvnschema.h"

void RepositoryTest::PrepareSchema() {
    try {
        if (!DvnSchema::Create(Db(), false)) throw std::runtime_error("the repository schema exists already");
    } catch (CDBException* e) {
        std::string text = e->m_strError.str();
        e->Delete();
        throw std::runtime_error("creating the repository schema failed: " + text);
    }
    prefix = DvnConvCoreDbIF::GetTablePrefix(Db());
}
