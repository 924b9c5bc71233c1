// The staff through the whole road: the import of levels, persons,
// organizations and roles (parse, rights, the stores' two passes with their
// lookups, rows and relation rows), the same file again with overwrite on,
// and the four loads that read the staff back, each against the raw-ODBC
// baseline of as many rows.
//
// A file of N persons, N/10 organizations, N/50 roles and 10 levels. Each
// person has a level, two roles, an organization, two process and one
// administration category authorization (of ten categories) and the work
// lists of the next two persons: eight rows per person. Each organization is
// managed by a person, each role has a coordinator. The persons' passwords
// are given in the stored form of 2048 rounds, which the store keeps as it
// is: a password in clear would cost a key derivation of the product's count
// per person and the figure would measure the hash, not the store.
//
// At a tenth of N (1x) and at N (10x), each into a database of its own; the
// last lines compare the cost per person, also of the loads:
//   person <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// usage: bench_staff [N] (default 1000)
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "benchrun.h"

namespace {

std::string Person(int i) {
    char name[32];
    std::snprintf(name, sizeof name, "user%06d", i);
    return name;
}
std::string Org(int i) { return "Org " + std::to_string(i); }
std::string Role(int i) { return "Role " + std::to_string(i); }
std::string Category(int i) { return "Category " + std::to_string(i); }

int Orgs(int n) { return std::max(1, n / 10); }
int Roles(int n) { return std::max(2, n / 50); }
const int kLevels = 10;
const int kCategories = 10;
const int kRounds = 2048;

std::string WriteStaff(int n) {
    const std::string path = bench::TempFile("bench_staff", n, ".trx");
    std::ofstream out(path);
    out << "Domain \"domain\" {}\nSystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n"
           "System \"DVNSYS\" { SystemIdentifier = 1; SystemIsInSystemGroup -> \"SYS_GRP\"; }\n";
    for (int c = 0; c < kCategories; ++c) out << "Category \"" << Category(c) << "\" {}\n";
    for (int l = 1; l <= kLevels; ++l)
        out << "Level \"" << l << "\" { Name = \"Level " << l << "\"; Description = \"Generated level\"; }\n";
    const int orgs = Orgs(n), roles = Roles(n);
    for (int i = 0; i < n; ++i) {
        const std::string name = Person(i);
        const DvnString password =
            DvnUser::PasswordEncodeWithRounds(DvnString(name.c_str()), DvnString(("pw" + name).c_str()), kRounds);
        out << "Person \"" << name << "\" {\n  FirstName = \"First" << i << "\"; LastName = \"Last" << i
            << "\"; Phone = \"+49 " << i << "\";\n  Password = \"" << password.c_str() << "\"; Level = "
            << i % kLevels + 1 << "; AuthorizedForProcessModeling = true;\n"
            << "  AuthorizedForWorklists [ \"" << Person((i + 1) % n) << "\", \"" << Person((i + 2) % n) << "\" ]\n"
            << "  PersonIsAuthorizedFor -> \"" << Category(i % kCategories) << "\";\n"
            << "  PersonIsAuthorizedFor -> \"" << Category((i + 1) % kCategories) << "\";\n"
            << "  PersonIsAuthorizedAsAdminFor -> \"" << Category((i + 2) % kCategories) << "\";\n"
            << "  PersonHasRole -> \"" << Role(i % roles) << "\";\n"
            << "  PersonHasRole -> \"" << Role((i + 1) % roles) << "\";\n"
            << "  PersonIsInOrganization -> \"" << Org(i % orgs) << "\";\n}\n";
    }
    for (int o = 0; o < orgs; ++o)
        out << "Organization \"" << Org(o) << "\" { Description = \"Generated organization\"; "
            << "OrganizationHasManager -> \"" << Person(o % n) << "\"; }\n";
    for (int r = 0; r < roles; ++r)
        out << "Role \"" << Role(r) << "\" { Description = \"Generated role\"; RoleHasCoordinator -> \""
            << Person(r % n) << "\"; }\n";
    return path;
}

}  // namespace

int main(int argc, char** argv) {
    int n = 1000;
    if (argc > 1) n = std::atoi(argv[1]);
    if (n < 2) {
        std::fprintf(stderr, "usage: bench_staff [N] (N at least 2)\n");
        return 2;
    }
    std::printf("persons of two roles, an organization, three category and two work list authorizations, "
                "at %d and at %d\n",
                std::max(1, n / 10), n);
    bench::PrintHeader("persons");
    bench::Growth growth;
    const int status = bench::ForTwoSizes("bench_staff", n, WriteStaff,
                                          [&](const char* backend, const std::string& ds, const std::string& path,
                                              int count) {
        const bench::Workload staff{
            count + Orgs(count) + Roles(count) + kLevels,
            {"STAFF_LEVEL", "PERSON", "ORGANIZATION", "ROLE", "ROLE_INCL_PERSON", "PERS_AUTH_FOR_PERS",
             "PERS_HAS_PRC_AUTH", "PERS_SEL_PADM_AUTH"},
            {{"Levels", &DvnConvCoreDbFe::Levels, "Level", {"STAFF_LEVEL"}},
             {"Persons", &DvnConvCoreDbFe::Persons, "Person",
              {"PERSON", "ROLE_INCL_PERSON", "PERS_AUTH_FOR_PERS", "PERS_HAS_PRC_AUTH", "PERS_SEL_PADM_AUTH"}},
             {"Roles", &DvnConvCoreDbFe::Roles, "Role", {"ROLE", "ROLE_INCL_PERSON"}},
             {"Orgs", &DvnConvCoreDbFe::Orgs, "Organization", {"ORGANIZATION", "PERSON"}}}};
        bench::ImportTwiceAndLoad(backend, ds, path, count, staff, growth);
    });
    growth.Print("person");
    return status;
}
