// The TRX writer: core data to text in one canonical form.
#include "dvnfffdn.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

namespace {

bool IsIdentifier(const std::string& s) {
    if (s.empty()) return false;
    auto start = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; };
    if (!start(s[0])) return false;
    for (char c : s)
        if (!start(c) && !(c >= '0' && c <= '9')) return false;
    return s != "true" && s != "false";
}

class Out {
public:
    Out(const DvnfCoreTypes& types, DvnTRXWriter::Options options) : _types(types), _options(options) {}

    void TopLevel(const DvnfEntity& e) {
        if (!_text.empty()) _text += '\n';
        if (e.State() == DvnfObject::StateDeleted) {
            _text += "delete ";
            Head(e, true);
            _text += ";\n";
            return;
        }
        Head(e, true);
        Body(e, 0);
        _text += '\n';
    }

    std::string Text() { return std::move(_text); }

private:
    void Indent(int depth) { _text.append(static_cast<size_t>(depth) * 2, ' '); }

    void Name(const std::string& name) { _text += IsIdentifier(name) ? name : DvnTRXWriter::Quote(name); }

    // Type "name" oid "key"
    void Head(const DvnfEntity& e, bool topLevel) {
        _text += e.Type().Name().str();
        if (topLevel || !e.Name().IsEmpty()) _text += ' ' + DvnTRXWriter::Quote(e.Name().str());
        if (_options.withOIDs && e.HasOID()) _text += " oid " + DvnTRXWriter::Quote(e.OID().str());
    }

    // { attributes by name, then links by type } ; the caller ends the line.
    void Body(const DvnfEntity& e, int depth) {
        _text += " {\n";
        size_t mark = _text.size();
        Items(e.AttributeData(), depth + 1);
        for (const DvnfLinkType* lt : _types.LinkTypesFrom(e.Type())) {
            for (const DvnfLink& l : e.Links()) {
                if (&l.Type() != lt || !l.IsValid()) continue;
                const DvnfEntity& t = l.Target();
                Indent(depth + 1);
                _text += lt->Name().str() + " -> ";
                if (t.Name().IsEmpty() && t.HasOID())
                    _text += "oid " + DvnTRXWriter::Quote(t.OID().str());
                else
                    _text += DvnTRXWriter::Quote(t.Name().str());
                _text += ";\n";
            }
        }
        if (_text.size() == mark) {
            _text.resize(mark - 1);
            _text += '}';
            return;
        }
        Indent(depth);
        _text += '}';
    }

    void Items(const DvnfAttributeDataReader& group, int depth) {
        std::vector<std::string> names = group.Names();
        std::sort(names.begin(), names.end());
        for (const std::string& n : names) {
            DvnfAttributeDataReader r = group(n.c_str());
            Indent(depth);
            Name(n);
            switch (r.Type()) {
            case DvnfAttributeType::Group:
            case DvnfAttributeType::Set: _text += ' '; break;
            default: _text += " = "; break;
            }
            Value(r, depth);
            bool block = r.Type() == DvnfAttributeType::Group || r.Type() == DvnfAttributeType::Set ||
                         (r.Type() == DvnfAttributeType::Entity && !r.AsEntity().Type().IsTopLevel());
            if (!block) _text += ';';
            _text += '\n';
        }
    }

    void Value(const DvnfAttributeDataReader& r, int depth) {
        switch (r.Type()) {
        case DvnfAttributeType::Long: _text += std::to_string(r.AsLong(0)); break;
        case DvnfAttributeType::Bool: _text += r.AsBool(false) ? "true" : "false"; break;
        case DvnfAttributeType::String: _text += DvnTRXWriter::Quote(r.AsString(DvnfString("")).str()); break;
        case DvnfAttributeType::Entity: Inner(r.AsEntity(), depth); break;
        case DvnfAttributeType::Group:
            if (r.Names().empty()) {
                _text += "{}";
            } else {
                _text += "{\n";
                Items(r, depth + 1);
                Indent(depth);
                _text += '}';
            }
            break;
        case DvnfAttributeType::Set: {
            if (r.NumberOfElements() == 0) {
                _text += "[]";
                break;
            }
            _text += "[\n";
            DvnfDataSetIterator it = r.ElementsOfSet();
            for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) {
                Indent(depth + 1);
                Value(e, depth + 1);
                _text += '\n';
            }
            Indent(depth);
            _text += ']';
            break;
        }
        default: _text += "{}"; break;
        }
    }

    // An entity inside attributes: defined in place, or named when it is one
    // of the entities defined at the top level.
    void Inner(const DvnfEntity& e, int depth) {
        if (e.Type().IsTopLevel()) {
            _text += e.Type().Name().str() + ' ';
            if (e.Name().IsEmpty() && e.HasOID())
                _text += "oid " + DvnTRXWriter::Quote(e.OID().str());
            else
                _text += DvnTRXWriter::Quote(e.Name().str());
            return;
        }
        Head(e, false);
        Body(e, depth);
    }

    const DvnfCoreTypes& _types;
    DvnTRXWriter::Options _options;
    std::string _text;
};

// Catalogue order of the types, then name, then key.
void Sort(const DvnfCoreTypes& types, std::vector<const DvnfEntity*>& v) {
    std::unordered_map<const DvnfEntityType*, size_t> rank;
    for (size_t i = 0; i < types.EntityTypes().size(); ++i) rank[types.EntityTypes()[i]] = i;
    std::stable_sort(v.begin(), v.end(), [&](const DvnfEntity* a, const DvnfEntity* b) {
        size_t ra = rank[&a->Type()], rb = rank[&b->Type()];
        if (ra != rb) return ra < rb;
        int c = a->Name().str().compare(b->Name().str());
        if (c != 0) return c < 0;
        return a->OID().str() < b->OID().str();
    });
}

}  // namespace

std::string DvnTRXWriter::Quote(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        unsigned char u = static_cast<unsigned char>(c);
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (u < 0x20 || u == 0x7F) {
                char buf[8];
                std::snprintf(buf, sizeof buf, "\\x%02X", u);
                out += buf;
            } else {
                out += c;
            }
        }
    }
    out += '"';
    return out;
}

std::string DvnTRXWriter::Write(const std::vector<const DvnfEntity*>& selection) const {
    std::vector<const DvnfEntity*> v;
    for (const DvnfEntity* e : selection) {
        DVNK_REQUIRE(e && e->IsValid() && e->Type().IsTopLevel(), "only top-level entities are written on their own");
        v.push_back(e);
    }
    Sort(_data.Types(), v);
    Out out(_data.Types(), _options);
    for (const DvnfEntity* e : v) out.TopLevel(*e);
    return out.Text();
}

std::string DvnTRXWriter::Write() const {
    std::vector<const DvnfEntity*> v;
    for (const DvnfEntity* e : _data.AllEntities())
        if (e->Type().IsTopLevel() && e->State() != DvnfObject::StateNone) v.push_back(e);
    return Write(v);
}

bool DvnTRXWriter::WriteFile(const char* path) const {
    std::ofstream out(path ? path : "", std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out << Write();
    out.close();
    return static_cast<bool>(out);
}
