// Load of the text annotations of a diagram: the rows of TEXT_ANNOTATION of
// the process or block, in the order of their names and then their texts
// and places (an annotation has no key that travels with it).
#include <tuple>

#include "dvnprocsets.h"
#include "processload.h"

using namespace processload;

namespace {

struct Annotation {
    std::string name;
    std::optional<std::string> text;  // NULL: no "Text"
    std::optional<long> textColor, backColor;
    std::optional<std::string> font;
    std::optional<long> fontSize, fontStyle;
    std::string fontDescriptor;
    std::optional<long> x, y, height, width;
    auto Order() const {
        return std::tie(name, text, x, y, width, height, textColor, backColor, font, fontSize, fontStyle,
                        fontDescriptor);
    }
};

}  // namespace

void DvnConvCoreDbFe::GetTextAnnotation(CString const& pid, CString const& blockId, DvnfEntity* parent,
                                        DvnfAttributeData& diagram) {
    std::vector<Annotation> annotations;
    DvnTextAnnotationSet rs(m_pDatabase);
    ReadRows(rs,
             CString("SELECT * FROM ") + Table("TEXT_ANNOTATION") + " WHERE [PID] =" + Literal(DvnString(pid.c_str())) +
                 InBlock("[INSIDE_BLOCK]", blockId),
             [&](DvnTextAnnotationSet& row) {
                 annotations.push_back({row.m_NAME.str(), Value(row, row.m_ANNOTATION_TEXT), Value(row, row.m_TEXT_COLOR),
                                        Value(row, row.m_BACK_COLOR), Value(row, row.m_TEXT_FONT),
                                        Value(row, row.m_TEXT_FONT_SIZ), Value(row, row.m_TEXT_FONT_STYLE),
                                        row.m_TEXT_FONT_DESC.str(), Value(row, row.m_XPOS), Value(row, row.m_YPOS),
                                        Value(row, row.m_HEIGHT), Value(row, row.m_WIDTH)});
             });
    std::sort(annotations.begin(), annotations.end(),
              [](const Annotation& a, const Annotation& b) { return a.Order() < b.Order(); });
    for (const Annotation& a : annotations) {
        Report(51512, DvnString(a.name));
        DvnfEntity& annotation = m_pCoreData->CreateTextAnnotation(diagram, DvnfString(a.name));
        TakeParentState(annotation, *parent);
        DvnfAttributeData attributes = annotation.AttributeData();
        if (a.text) attributes("Text") = a.text->c_str();
        if (a.textColor) GetColor(*a.textColor, attributes("Color"));
        if (a.backColor) GetColor(*a.backColor, attributes("BackgroundColor"));
        // The store keeps no font without a name.
        if (a.font)
            GetFontSetting(CString(a.font->c_str()), a.fontSize.value_or(-1), a.fontStyle.value_or(-1),
                           CString(a.fontDescriptor.c_str()), attributes("Font"));
        DvnfAttributeData layout = attributes("Layout");
        Put(a.x, layout("Xpos"));
        Put(a.y, layout("Ypos"));
        Put(a.height, layout("Height"));
        Put(a.width, layout("Width"));
    }
}
