#include "ui/TranslatedHtml.h"

#include <QObject>

#include <tinyxml2.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

// All the text below a node, in document order.
void CollectText(const tinyxml2::XMLNode* node, std::string& text)
{
    for (const tinyxml2::XMLNode* child = node->FirstChild(); child; child = child->NextSibling()) {
        if (const tinyxml2::XMLText* part = child->ToText())
            text += part->Value();
        else
            CollectText(child, text);
    }
}

// Children first, so a translation inside a translation is done before the outer one reads its
// text. Returns the node that now stands where `node` stood.
tinyxml2::XMLNode* Translate(tinyxml2::XMLNode* node, bool isRoot)
{
    for (tinyxml2::XMLNode* child = node->FirstChild(); child;)
        child = Translate(child, false)->NextSibling();

    tinyxml2::XMLElement* element = node->ToElement();
    if (isRoot || !element || std::string(element->Name()) != "translate")
        return node;

    std::string text;
    CollectText(element, text);
    tinyxml2::XMLDocument* document = element->GetDocument();
    tinyxml2::XMLElement* translated = document->NewElement("translated");
    translated->InsertEndChild(document->NewText(QObject::tr(text.c_str()).toUtf8().constData()));

    tinyxml2::XMLNode* parent = element->Parent();
    parent->InsertAfterChild(element, translated);
    parent->DeleteChild(element);
    return translated;
}

}  // namespace

QString TranslateHtml(const QString& html)
{
    QString result = html;
    try {
        tinyxml2::XMLDocument document;
        const QByteArray utf8 = html.toUtf8();
        if (document.Parse(utf8.constData(), static_cast<size_t>(utf8.size())) != tinyxml2::XML_SUCCESS)
            throw std::runtime_error(document.ErrorStr());
        // Every top-level node is the root of a walk of its own and stays as it is.
        for (tinyxml2::XMLNode* node = document.FirstChild(); node; node = node->NextSibling())
            Translate(node, true);
        tinyxml2::XMLPrinter printer(nullptr, true);
        document.Print(&printer);
        result = QString::fromUtf8(printer.CStr());
    }
    catch (const std::exception&) {
        std::fprintf(stderr, "Error parsing translated html.\n");
    }
    for (const char* marker : {"<translated>", "</translated>", "<translate>", "</translate>"})
        result.remove(QLatin1String(marker), Qt::CaseSensitive);
    return result;
}
