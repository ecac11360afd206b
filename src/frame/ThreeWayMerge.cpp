#include <meridex/frame/ThreeWayMerge.h>

#include <libxml/tree.h>

#include <cstring>
#include <unordered_map>
#include <utility>
#include <vector>

#include <meridex/frame/Text.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlDocument.h>

namespace meridex::ThreeWayMerge {
namespace {

bool Blank(xmlNodePtr node) {
    if (node->type != XML_TEXT_NODE || !node->content) return false;
    for (const xmlChar* c = node->content; *c; ++c) {
        if (*c != ' ' && *c != '\t' && *c != '\r' && *c != '\n') return false;
    }
    return true;
}

// The next child that is not layout (a text of blanks only).
xmlNodePtr Significant(xmlNodePtr node) {
    while (node && Blank(node)) node = node->next;
    return node;
}

bool SameText(const xmlChar* a, const xmlChar* b) {
    return std::strcmp(a ? reinterpret_cast<const char*>(a) : "", b ? reinterpret_cast<const char*>(b) : "") == 0;
}

bool SameAttributes(xmlNodePtr a, xmlNodePtr b) {
    xmlAttrPtr x = a->properties;
    xmlAttrPtr y = b->properties;
    for (; x && y; x = x->next, y = y->next) {
        if (!SameText(x->name, y->name)) return false;
        xmlChar* vx = xmlNodeListGetString(a->doc, x->children, 1);
        xmlChar* vy = xmlNodeListGetString(b->doc, y->children, 1);
        const bool same = SameText(vx, vy);
        xmlFree(vx);
        xmlFree(vy);
        if (!same) return false;
    }
    return !x && !y;
}

// Two subtrees alike apart from layout, compared without recursion.
bool SameTree(xmlNodePtr a, xmlNodePtr b) {
    std::vector<std::pair<xmlNodePtr, xmlNodePtr>> pending{{a, b}};
    while (!pending.empty()) {
        auto [x, y] = pending.back();
        pending.pop_back();
        if (x->type != y->type || !SameText(x->name, y->name)) return false;
        if (x->type != XML_ELEMENT_NODE) {
            if (!SameText(x->content, y->content)) return false;
            continue;
        }
        if (!SameAttributes(x, y)) return false;
        xmlNodePtr cx = Significant(x->children);
        xmlNodePtr cy = Significant(y->children);
        for (; cx && cy; cx = Significant(cx->next), cy = Significant(cy->next)) pending.emplace_back(cx, cy);
        if (cx || cy) return false;
    }
    return true;
}

bool Same(const XmlNode& a, const XmlNode& b) {
    return !a.IsNull() && !b.IsNull() && SameTree(XmlAccess::Raw(a), XmlAccess::Raw(b));
}

struct Member {
    std::string key;
    XmlNode node;
};

// The element children in order, each keyed by its name, the folded text of
// its KEY child where it has one, and its place among children keyed alike.
std::vector<Member> Members(const XmlNode& parent, const Rules& rules) {
    std::vector<Member> members;
    if (parent.IsNull()) return members;
    std::unordered_map<std::string, int> seen;
    std::string scratch;
    for (XmlNode child = parent.FirstChildElement(); child; child = child.NextSiblingElement()) {
        std::string key = child.Name();
        if (rules.identity) key += ":" + rules.identity(child);
        else if (child.FirstChildElement("KEY")) key += ":" + Text::FoldCase(child.ChildText("KEY", scratch));
        if (const int n = seen[key]++; n > 0) key += "#" + std::to_string(n);
        members.push_back({std::move(key), child});
    }
    return members;
}

std::unordered_map<std::string_view, XmlNode> ByKey(const std::vector<Member>& members) {
    std::unordered_map<std::string_view, XmlNode> map;
    map.reserve(members.size());
    for (const Member& m : members) map.emplace(m.key, m.node);
    return map;
}

XmlNode Find(const std::unordered_map<std::string_view, XmlNode>& map, std::string_view key) {
    const auto found = map.find(key);
    return found == map.end() ? XmlNode() : found->second;
}

// Ours takes their content, keeping its own element (so views on it see it).
void TakeContent(const XmlNode& ours, const XmlNode& theirs) {
    while (XmlNode child = ours.FirstChild()) ours.RemoveChild(child);
    for (XmlNode child = theirs.FirstChild(); child; child = child.NextSibling()) ours.AppendChild(child.CloneNode(true));
}

struct Triple {
    XmlNode ours, base, theirs;
};

}  // namespace

bool MergeElements(const XmlNode& ours, const XmlNode& base, const XmlNode& theirs, const Rules& rules) {
    bool clean = true;
    std::vector<Triple> pending{{ours, base, theirs}};
    while (!pending.empty()) {
        const Triple level = std::move(pending.back());
        pending.pop_back();
        const std::vector<Member> oursMembers = Members(level.ours, rules);
        const std::vector<Member> baseMembers = Members(level.base, rules);
        const std::vector<Member> theirMembers = Members(level.theirs, rules);
        const auto oursByKey = ByKey(oursMembers);
        const auto baseByKey = ByKey(baseMembers);
        const auto theirsByKey = ByKey(theirMembers);
        for (const Member& o : oursMembers) {
            const XmlNode b = Find(baseByKey, o.key);
            const XmlNode t = Find(theirsByKey, o.key);
            const bool merged = rules.descend && rules.descend(o.node.Name());
            if (t) {
                if (Same(o.node, t) || (b && Same(t, b))) continue;
                if (merged) {
                    pending.push_back({o.node, b, t});
                } else if (b && Same(o.node, b)) {
                    TakeContent(o.node, t);
                } else {
                    clean = false;  // both changed it: ours stays
                }
            } else if (b) {
                if (Same(o.node, b))
                    level.ours.RemoveChild(o.node);  // they deleted it
                else
                    clean = false;  // we changed what they deleted: ours stays
            }
        }
        XmlNode after;  // the child of ours their next addition follows
        for (const Member& t : theirMembers) {
            if (const XmlNode o = Find(oursByKey, t.key)) {
                if (o.Parent() == level.ours) after = o;
                continue;
            }
            if (const XmlNode b = Find(baseByKey, t.key)) {
                if (!Same(t.node, b)) clean = false;  // we deleted what they changed
                continue;
            }
            const XmlNode next = after ? after.NextSibling() : level.ours.FirstChild();
            after = level.ours.InsertBefore(t.node.CloneNode(true), next);
            if (rules.inserted) rules.inserted(after, level.ours);
        }
    }
    return clean;
}

bool MergeDocuments(const XmlNode& ours, const std::string& base, const std::string& theirs, const Rules& rules) {
    const XmlDocument theirDocument = XmlDocument::Parse(theirs);
    const XmlNode theirRoot = theirDocument ? theirDocument.DocumentElement() : XmlNode();
    if (ours.IsNull() || theirRoot.IsNull() || theirRoot.Name() != ours.Name()) return false;
    const XmlDocument baseDocument = base.empty() ? XmlDocument() : XmlDocument::Parse(base);
    XmlNode baseRoot = baseDocument ? baseDocument.DocumentElement() : XmlNode();
    if (baseRoot && baseRoot.Name() != ours.Name()) baseRoot = XmlNode();
    return MergeElements(ours, baseRoot, theirRoot, rules);
}

}  // namespace meridex::ThreeWayMerge
