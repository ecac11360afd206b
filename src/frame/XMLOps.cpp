#include <meridex/frame/XMLOps.h>

#include <cstdio>
#include <cstdlib>

#include <meridex/frame/Numeric.h>
#include <meridex/frame/Text.h>
#include <meridex/frame/XmlAccess.h>
#include <meridex/frame/XmlImpl.h>

namespace meridex::XMLOps {
namespace {

// Trivially destructible, so it is still there for a lease held by a static
// object, which ends after the thread's own objects: the last release frees
// the document, whenever it comes.
struct Factory {
    XmlDocument* document = nullptr;
    std::int32_t uses = 0;
};

// One factory per thread, as the library runs on its caller's thread.
Factory& ThreadFactory() {
    thread_local Factory factory;
    return factory;
}

// A write that may need the factory, made while no lease holds it, would lose
// its new element or its change mark without a word: a debug build stops here
// so the missing XMLFactoryLease is found where it is missing.
void RequireFactory(const char* routine) {
#ifndef NDEBUG
    if (ThreadFactory().uses <= 0) {
        std::fprintf(stderr,
                     "meridex: XMLOps::%s: a write with no XMLFactoryLease held (factory use count 0) "
                     "would lose its element or change mark\n",
                     routine);
        std::abort();
    }
#else
    (void)routine;
#endif
}

// Creates name under node with text value, made by node's own document;
// any failure is ignored.
void CreateChild(const XmlNode& node, std::string_view name, std::string_view value) {
    xmlNodePtr parent = XmlAccess::Raw(node);
    if (parent && parent->type == XML_ELEMENT_NODE && parent->doc) {
        // Under an element, made and linked directly: nothing can see the new
        // element before it is in place, so it needs no view of its own. The
        // document's edit count moves as a text written into it moves it.
        if (!xmlimpl::IsValidName(name)) return;
        const std::string tag(name);
        xmlNodePtr element = xmlNewDocNode(parent->doc, nullptr, reinterpret_cast<const xmlChar*>(tag.c_str()), nullptr);
        if (!element) return;
        std::string cleaned;
        const std::string_view clean = xmlimpl::IsCleanText(value) ? value : (cleaned = xmlimpl::CleanText(value));
        if (!clean.empty()) {
            xmlNodePtr text = xmlNewDocTextLen(parent->doc, reinterpret_cast<const xmlChar*>(clean.data()),
                                               static_cast<int>(clean.size()));
            if (!text) {
                xmlFreeNode(element);
                return;
            }
            text->parent = element;
            element->children = element->last = text;
            ++xmlimpl::HolderOf(parent->doc)->editGeneration;
        }
        if (!xmlimpl::MoveInto(parent, element, nullptr)) {
            xmlFreeNode(element);
            return;
        }
        MarkDocumentChanged(node);
        return;
    }
    XmlDocument owner = node.OwnerDocument();
    if (!owner) return;
    XmlNode element = owner.CreateElement(name);
    if (!element) return;
    element.setText(value);
    if (node.AppendChild(element)) MarkDocumentChanged(node);
}

void RemoveChild(const XmlNode& node, std::string_view name) {
    if (XmlNode found = node.SelectSingle(name)) node.RemoveChild(found);
}

}  // namespace

XmlDocument NewXMLDocument() {
    XmlDocument document = XmlDocument::New();
    document.DocumentNode().AppendChild(document.CreateProcessingInstruction("xml", kDeclarationData));
    return document;
}

void AcquireXMLFactory() {
    Factory& factory = ThreadFactory();
    if (++factory.uses == 1) factory.document = new XmlDocument(NewXMLDocument());
}

void ReleaseXMLFactory() {
    Factory& factory = ThreadFactory();
    if (--factory.uses <= 0) {
        factory.uses = 0;
        delete factory.document;
        factory.document = nullptr;
    }
}

std::int32_t XMLFactoryUseCount() { return ThreadFactory().uses; }

XmlDocument XMLFactory() {
    const Factory& factory = ThreadFactory();
    return factory.document ? *factory.document : XmlDocument();
}

XmlNode CreateXMLElement(std::string_view name) {
    const XmlDocument* factory = ThreadFactory().document;
    return factory ? factory->CreateElement(name) : XmlNode();
}

std::string GetXMLValue(const XmlNode& node, std::string_view name, std::string_view defaultValue) {
    if (!node) return {};
    if (XmlNode found = node.SelectSingle(name)) return found.Text();
    SetXMLValue(node, name, defaultValue, false);
    return std::string(defaultValue);
}

void SetXMLValue(const XmlNode& node, std::string_view name, std::string_view value, bool force) {
    if (!node) return;
    if (force) {
        if (XmlNode found = node.SelectSingle(name)) {
            found.setText(value);
            MarkDocumentChanged(node);
        } else {
            CreateChild(node, name, value);
        }
        return;
    }
    // Unless forced, empty and "0" are never stored: they delete the element.
    if (value.empty() || value == "0") {
        RemoveChild(node, name);
        return;
    }
    if (value == GetXMLValue(node, name, "")) return;
    if (XmlNode found = node.SelectSingle(name)) {
        found.setText(value);
        MarkDocumentChanged(node);
    } else {
        CreateChild(node, name, value);
    }
}

std::string ReadXMLString(const XmlNode& node, std::string_view name, std::string_view defaultValue, bool force) {
    if (!node) return std::string(defaultValue);
    if (XmlNode found = node.SelectSingle(name)) return found.Text();
    SetXMLValue(node, name, defaultValue, force);
    return std::string(defaultValue);
}

std::int16_t ReadXMLInteger(const XmlNode& node, std::string_view name, std::int16_t defaultValue, bool force) {
    if (!node) return defaultValue;
    if (XmlNode found = node.SelectSingle(name)) return Numeric::ToInt16(Numeric::LeadingNumber(found.Text()));
    SetXMLValue(node, name, Numeric::ToText(defaultValue), force);
    return defaultValue;
}

bool ReadXMLBoolean(const XmlNode& node, std::string_view name, bool defaultValue, bool force) {
    if (!node) return defaultValue;
    if (XmlNode found = node.SelectSingle(name)) {
        const std::string text = found.Text();
        if (Numeric::IsNumeric(text)) return Numeric::LeadingNumber(text) != 0;
        return Text::ToUpper(text) == "TRUE";
    }
    SetXMLValue(node, name, defaultValue ? "True" : "False", force);
    return defaultValue;
}

void WriteXMLString(const XmlNode& node, std::string_view name, std::string_view value, std::string_view defaultValue,
                    bool force) {
    if (!node) return;
    RequireFactory("WriteXMLString");
    if (XmlNode found = node.SelectSingle(name)) {
        found.setText(value);
    } else if (force || value != defaultValue) {
        if (XmlNode element = CreateXMLElement(name)) {
            element.setText(value);
            node.AppendChild(element);
        }
    }
    MarkDocumentChanged(node);
}

void WriteXMLInteger(const XmlNode& node, std::string_view name, std::int16_t value, std::int16_t defaultValue,
                     bool force) {
    if (!node) return;
    RequireFactory("WriteXMLInteger");
    if (XmlNode found = node.SelectSingle(name)) {
        found.setText(Numeric::ToText(value));
    } else if (force || value != defaultValue) {
        if (XmlNode element = CreateXMLElement(name)) {
            element.setText(Numeric::ToText(value));
            node.AppendChild(element);
        }
    }
    MarkDocumentChanged(node);
}

void MarkDocumentChanged(const XmlNode& node) {
    xmlNodePtr raw = XmlAccess::Raw(node);
    if (!raw || raw->type == XML_DOCUMENT_NODE || !raw->doc) return;
    RequireFactory("MarkDocumentChanged");
    xmlDocPtr doc = raw->doc;
    xmlNodePtr root = doc->children;
    while (root && root->type != XML_ELEMENT_NODE) root = root->next;
    if (!root) return;
    // The mark is looked up once per document and remembered while nothing
    // has been unlinked from the tree, so repeated writes stay cheap on a
    // root with thousands of children.
    xmlimpl::DocHolder* holder = xmlimpl::HolderOf(doc);
    XmlNode mark;
    if (holder->changedMark && holder->changedMarkGeneration == holder->editGeneration &&
        holder->changedMark->parent == root) {
        mark = XmlAccess::View(holder->changedMark);
    } else {
        XmlNode rootView = XmlAccess::View(root);
        mark = rootView.SelectSingle("CHANGED");
        if (!mark) {
            mark = CreateXMLElement("CHANGED");
            if (!mark || !rootView.AppendChild(mark)) return;
        }
        holder->changedMark = XmlAccess::Raw(mark);
        holder->changedMarkGeneration = holder->editGeneration;
    }
    mark.setText("-1");
}

std::int16_t FindXMLNodeIndex(const std::vector<XmlNode>& list, std::string_view childName, std::string_view value) {
    const std::size_t limit = std::min<std::size_t>(list.size(), 32767);
    for (std::size_t i = 0; i < limit; ++i) {
        if (Text::EqualsIgnoreCase(GetXMLValue(list[i], childName, ""), value)) return static_cast<std::int16_t>(i);
    }
    return -1;
}

}  // namespace meridex::XMLOps
