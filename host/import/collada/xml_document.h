#pragma once

/// A Collada file as a tree of XML elements, and where in the file each of them is.

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <string_view>

namespace mobu_host::collada
{

using Element = pugi::xml_node;

/// The text of an attribute; empty where there is none. Lives as long as the document.
std::string_view Attribute(Element element, const char* name);

/// The name that the author gave, else the id, else the sid.
std::string_view NameOf(Element element);

/// The id in "#id". Empty for anything else, such as a part of another file.
std::string_view IdOf(std::string_view url);

/// A name or text of the file in quotes: on one line, cut where it is long.
std::string Quoted(std::string_view text);

class XmlDocument
{
public:
    /// `bytes` have to live as long as the document. Throws ParseError for what is not XML, or not Collada.
    explicit XmlDocument(std::string_view bytes);

    Element Root() const { return tree_.document_element(); }

    /// Throws ParseError: "<float_array> "times" CAUSE (line 12)".
    [[noreturn]] void Fail(Element element, const std::string& cause) const;

private:
    std::string Line(std::ptrdiff_t offset) const;

    std::string_view bytes_;
    pugi::xml_encoding encoding_ = pugi::encoding_auto;
    pugi::xml_document tree_;
};

/// The words of an element's text, which blanks separate.
class Words
{
public:
    explicit Words(Element element) : text_(element.first_child()) { Open(); }

    /// False after the last one.
    bool Next(std::string_view& word);

private:
    void Open();

    Element text_;
    std::string_view rest_;
};

} // namespace mobu_host::collada
