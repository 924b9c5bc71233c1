// Store of the text annotations of a diagram (the notes drawn on a process
// or inside a block): one TEXT_ANNOTATION row each, with position, size,
// text, colours and font.
//
// An annotation has no name to be found by (a file gives it a name that may
// repeat, or none), so the annotations of a diagram are rewritten with the
// diagram: its rows go, and each annotation of the set that is not marked
// for deletion is written anew under its key. docs/store.md tells why.
#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

namespace {

// A packed colour from "Red", "Green" and "Blue"; null when the colour is
// not defined.
void SetColor(CRecordset& row, long& member, const DvnfAttributeDataReader& color) {
    if (color.IsDefined())
        member = DvnStored::PackedColor(color("Red").AsLong(0), color("Green").AsLong(0), color("Blue").AsLong(0));
    else
        row.SetFieldNull(&member);
}

void FillAnnotation(DvnTextAnnotationSet& row, DvnfEntity& annotation, const CString& pid, const CString& blockAid) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(annotation).AttributeData();
    row.m_ANNOTATION_ID = annotation.OID().c_str();
    DvnStored::SetText(row, row.m_NAME, annotation.Name().str());
    row.m_PID = pid;
    DvnStored::SetText(row, row.m_INSIDE_BLOCK, blockAid.str());
    DvnStored::SetText(row, row.m_ANNOTATION_TEXT, attributes("Text").AsString("").str());
    SetColor(row, row.m_TEXT_COLOR, attributes("Color"));
    SetColor(row, row.m_BACK_COLOR, attributes("BackgroundColor"));
    const DvnfAttributeDataReader font = attributes("Font");
    DvnStored::SetText(row, row.m_TEXT_FONT, font("Name").AsString("").str());
    SetLongOrNull(row, row.m_TEXT_FONT_SIZ, font("Size"));
    SetLongOrNull(row, row.m_TEXT_FONT_STYLE, font("Style"));
    DvnStored::SetText(row, row.m_TEXT_FONT_DESC, font("Descriptor").AsString("").str());
    const DvnfAttributeDataReader layout = attributes("Layout");
    SetLongOrNull(row, row.m_XPOS, layout("Xpos"));
    SetLongOrNull(row, row.m_YPOS, layout("Ypos"));
    SetLongOrNull(row, row.m_WIDTH, layout("Width"));
    SetLongOrNull(row, row.m_HEIGHT, layout("Height"));
}

}  // namespace

int DvnConvCoreDbBe::SaveTextAnnotations(CDatabase& db, DvnfAttributeDataReader diagram, const CString& pid,
                                         const CString& blockAid) {
    const char* table = "TEXT_ANNOTATION";
    CString where = CString("PID = ") + Quoted(pid);
    where += blockAid.IsEmpty() ? CString(" AND INSIDE_BLOCK IS NULL") : " AND INSIDE_BLOCK = " + Quoted(blockAid);
    int level = DeleteRows(db, table, where);
    if (level >= LevelError) return level;

    DvnTextAnnotationSet row(&db);
    // No row matches: the set is opened only to add rows.
    row.m_strFilter = "1 = 0";
    try {
        row.Open(CRecordset::snapshot, Table(table), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", table, &row);
    }
    if (!row.CanAppend()) {
        row.Close();
        DVN_TRACE(1, 2, "Text annotation not added");
        return LevelError;
    }
    DvnfDataSetIterator elements = diagram("TextAnnotations").ElementsOfSet();
    for (DvnfAttributeDataReader element = elements.First(); element.IsValid(); element = elements.Next()) {
        DvnfEntity& annotation = element.AsEntity();
        if (!annotation.IsValid() || annotation.State() == StateDeleted) continue;
        try {
            row.AddNew();
            FillAnnotation(row, annotation, pid, blockAid);
            row.Update();
        } catch (CDBException* e) {
            // One that does not fit its columns is reported; the others go on.
            Report(51368, DvnString(e->m_strError.c_str()));
            DVN_TRACE(1, 2, "Exception updating table " << table << ": rc =" << e->m_nRetCode
                                                         << "Error: " << e->m_strError);
            e->Delete();
            DVN_TRACE(1, 2, "Text annotation not added");
            level = LevelError;
            continue;
        }
        ResetState(annotation);
    }
    row.Close();
    return level;
}
