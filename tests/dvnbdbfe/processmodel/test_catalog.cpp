// Loads of categories and data structures: states from row marks, bare
// tombstones, the null rule, an object met twice, a key that is not there,
// the fill of a skeleton by key or by name; members in their stored order
// with their kinds, sub-structures by key (a failed read: test_process.cpp).
#include <gtest/gtest.h>

#include <algorithm>

#include "../loadrun.h"
#include "testenv.h"

namespace {

class CatalogLoad : public RepositoryTest {
protected:
    static std::string Texts(const DvnfEntity& e) {
        return Defined(e.AttributeData(), {"Description", "Documentation"});
    }
    static Lines Sorted(Lines lines) {
        std::sort(lines.begin(), lines.end());
        return lines;
    }
    // Order's members out of their order; Gone a tombstone with members.
    void StructureRows() { ExecData(Db(), "dvnbdbfe/structures.sql"); }
    // Each member as name|attributes|sub-structure link target.
    static Lines Members(const DvnfEntity& structure) {
        Lines out;
        DvnfDataSetIterator members = structure.AttributeData()("Members").ElementsOfSet();
        for (DvnfAttributeDataReader m = members.First(); m.IsValid(); m = members.Next()) {
            const DvnfEntity& object = m.AsEntity();
            std::string line = object.Name().str() + "|" +
                               Defined(m, {"Name", "Type", "Cardinality", "Description", "Documentation"});
            const DvnfLink& sub = object.FirstLinkOfType("HasSubStructure");
            if (sub.IsValid()) line += "|" + sub.Target().OID().str() + "=" + sub.Target().Name().str();
            out.push_back(line);
        }
        return out;
    }
    const Lines kOrder = {
        "Number|Name=Number Type=1 Documentation=docs",
        "Note|Name=Note Type=0",
        "ShipTo|Name=ShipTo Type=4|S2=Address",
        "Lines|Name=Lines Type=2 Cardinality=20 Description=the lines",
        "Ghost|Name=Ghost Cardinality=2",  // its structure is not there: no "Type"
        "Flag|Name=Flag Type=3",
        "Odd|Name=Odd Type=0",
    };
};

TEST_P(CatalogLoad, RowsBecomeCategoriesInTheStateOfTheirMarkOnceEachAndFillSkeletonsByKey) {
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, DESCRIPTION, DOCUMENTATION) VALUES "
                   "('C1', 'Sales', 0, 'Customer orders', 'Long text'), ('C2', 'Obsolete', 4, 'gone', 'gone too'), "
                   "('C3', 'Pending', 9, NULL, 'only docs'), ('C4', 'Fresh', 5, 'new', NULL), "
                   "('C5', 'Edited', 3, NULL, NULL), ('C''6', 'Quoted', 0, 'q', NULL)"});
    LoadRun run(Db());
    TraceCapture trace;
    run.fe.Categories(DvnString("C1"));
    EXPECT_EQ(run.Messages(), (Lines{"51513|Sales"}));
    run.handler.Clear();
    // One progress message per row, whatever order the database gives them
    // in; the held one is passed over in silence.
    run.fe.Categories(DvnString(""));
    EXPECT_EQ(Sorted(run.Messages()),
              (Lines{"51513|Edited", "51513|Fresh", "51513|Obsolete", "51513|Pending", "51513|Quoted"}));
    EXPECT_NE(trace.Text().find("Number of Categories found: 6"), std::string::npos);
    const struct {
        const char* oid;
        const char* name;
        DvnfObject::State_t state;
        const char* texts;
    } expected[] = {
        {"C1", "Sales", 3, "Description=Customer orders Documentation=Long text"},
        {"C2", "Obsolete", 1, ""},  // a tombstone: no attributes
        {"C3", "Pending", 3, "Documentation=only docs"},  // mark 9 is unchanged; NULL is not defined
        {"C4", "Fresh", 2, "Description=new"},
        {"C5", "Edited", 4, ""},
    };
    for (const auto& e : expected) {
        const DvnfEntity& category = run.Get("Category", e.oid);
        ASSERT_TRUE(category.IsValid()) << e.oid;
        EXPECT_EQ(category.Name().str(), e.name);
        EXPECT_EQ(category.State(), e.state) << e.oid;
        EXPECT_EQ(Texts(category), e.texts) << e.oid;
    }
    // Met again: only the tombstone, whose state says nothing was loaded, is
    // read again, into the same entity.
    run.handler.Clear();
    run.fe.Categories(DvnString(""));
    EXPECT_EQ(run.Messages(), (Lines{"51513|Obsolete"}));
    EXPECT_EQ(run.Count("Category"), 6u);
    EXPECT_EQ(run.Get("Category", "C2").State(), DvnfObject::StateDeleted);

    // A skeleton filled by its key is unchanged whatever the mark; a
    // tombstone or a key without a row leaves it.
    LoadRun fill(Db());
    const struct {
        const char* oid;
        DvnfObject::State_t state;
        const char* texts;
    } cases[] = {
        {"C1", 3, "Description=Customer orders Documentation=Long text"},
        {"C4", 3, "Description=new"},
        {"C'6", 3, "Description=q"},  // the key goes into the statement as a literal
        {"C2", 0, ""},
        {"NONE", 0, ""},
    };
    for (const auto& c : cases) {
        DvnfEntity& skeleton = fill.data.GetEntityByOID(DvnfString("Category"), DvnfString(c.oid), true);
        EXPECT_EQ(fill.fe.CategoryToCore(skeleton), 0) << c.oid;
        EXPECT_EQ(skeleton.State(), c.state) << c.oid;
        EXPECT_EQ(Texts(skeleton), c.texts) << c.oid;
    }
    EXPECT_EQ(fill.Messages(), Lines{});

    // A key that is not there is reported; on an empty table a load of all says nothing.
    fill.fe.Categories(DvnString("NOPE"));
    EXPECT_EQ(fill.Messages(), (Lines{"51549|NOPE"}));
    EXPECT_EQ(fill.Count("Category"), 5u);  // the skeletons only
    ExecAll(Db(), {"DELETE FROM DVBT.CATEGORY"});
    LoadRun empty(Db());
    empty.fe.Categories(DvnString(""));
    EXPECT_EQ(empty.Messages(), Lines{});
}

TEST_P(CatalogLoad, StructureMembersComeInTheirStoredOrderWithTheirKindsAndSubStructures) {
    StructureRows();
    LoadRun run(Db());
    run.fe.DataStructures(DvnString(""));
    EXPECT_EQ(Sorted(run.Messages()),
              (Lines{"51515|Address", "51515|Default Data Structure", "51515|Gone", "51515|Order"}));

    const DvnfEntity& order = run.Get("DataStructure", "S1");
    EXPECT_EQ(order.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(Defined(order.AttributeData(), {"Description", "Documentation"}), "Description=an order");
    EXPECT_EQ(Members(order), kOrder);
    EXPECT_EQ(run.Get("DataStructure", "S2").State(), DvnfObject::StateChanged);
    EXPECT_EQ(Members(run.Get("DataStructure", "S2")), Lines{"Street|Name=Street Type=0"});
    // A tombstone is bare, though its member rows stayed.
    const DvnfEntity& gone = run.Get("DataStructure", "S3");
    EXPECT_EQ(gone.State(), DvnfObject::StateDeleted);
    EXPECT_FALSE(gone.AttributeData()("Members").IsDefined());
    EXPECT_FALSE(gone.AttributeData()("Description").IsDefined());

    // Met again, by key or with all: no member twice, no second entity.
    run.fe.DataStructures(DvnString("S1"));
    run.fe.DataStructures(DvnString(""));
    EXPECT_EQ(Members(order), kOrder);
    EXPECT_EQ(run.Count("DataStructure"), 4u);
    run.fe.DataStructures(DvnString("NOPE"));
    EXPECT_EQ(run.Messages().back(), "51551|NOPE");
}

TEST_P(CatalogLoad, AStructureSkeletonIsFilledByNameOrByKeyAndATombstoneOrNoRowGivesEight) {
    StructureRows();
    LoadRun run(Db());
    // By name: the skeleton takes the key of the row.
    DvnfEntity& byName = run.data.GetEntityByName(DvnfString("DataStructure"), DvnfString("Order"), true);
    EXPECT_EQ(run.fe.DsToCore(byName), 0);
    EXPECT_EQ(byName.OID().str(), "S1");
    EXPECT_EQ(byName.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(Members(byName), kOrder);
    // The sub-structure it names is a skeleton with its name, filled by key.
    DvnfEntity& address = run.Get("DataStructure", "S2");
    EXPECT_EQ(address.State(), DvnfObject::StateNone);
    EXPECT_EQ(address.Name().str(), "Address");
    EXPECT_EQ(run.fe.DsToCore(address), 0);
    EXPECT_EQ(Members(address), Lines{"Street|Name=Street Type=0"});
    // Once loaded it is read again by its key, and holds each member once.
    DvnfEntity& again = run.data.GetEntityByName(DvnfString("DataStructure"), DvnfString("Order"), false);
    EXPECT_EQ(&again, &byName);
    EXPECT_EQ(run.fe.DsToCore(again), 0);
    EXPECT_EQ(Members(byName), kOrder);

    for (const char* name : {"Gone", "Nothing"}) {
        DvnfEntity& skeleton = run.data.GetEntityByName(DvnfString("DataStructure"), DvnfString(name), true);
        EXPECT_EQ(run.fe.DsToCore(skeleton), 8) << name;
        EXPECT_EQ(skeleton.State(), DvnfObject::StateNone) << name;
    }
    DvnfEntity& byKey = run.data.GetEntityByOID(DvnfString("DataStructure"), DvnfString("S3"), true);
    EXPECT_EQ(run.fe.DsToCore(byKey), 8);
    EXPECT_EQ(run.Messages(), Lines{});
}

DVN_INSTANTIATE_BOTH_BACKENDS(CatalogLoad);

}  // namespace
