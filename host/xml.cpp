// Xml_Encode, on pugixml: a "document" element with one child for each filled member, in the order of declaration.
//
//   <document><xtype>3</xtype><name>alarm</name><content>a &lt; b</content></document>
//
// A text is filled if it is not empty, a number if it is not 0. The list handle has no text form. Texts are UTF-8.
// Control characters are left out, because XML cannot carry them.
#include <cstring>
#include <string_view>

#include <pugixml.hpp>

#include "host.h"

namespace {

// Keeps what fits before the terminator, and notes if something did not fit.
class BoundedWriter : public pugi::xml_writer {
  public:
    BoundedWriter(char *out, size_t room) : out_(out), room_(room) {}

    void write(const void *data, size_t size) override {
        complete_ = complete_ && size <= room_ - length_;
        if (!complete_)
            return;
        std::memcpy(out_ + length_, data, size);
        length_ += size;
    }

    bool complete() const { return complete_; }
    size_t length() const { return length_; }

  private:
    char *out_;
    size_t room_;
    size_t length_ = 0;
    bool complete_ = true;
};

template <size_t Size>
void add_text(pugi::xml_node parent, const char *name, const char (&text)[Size]) {
    if (text[0] != '\0')
        parent.append_child(name).text().set(text, strnlen(text, Size));
}

void add_number(pugi::xml_node parent, const char *name, int number) {
    if (number != 0)
        parent.append_child(name).text().set(number);
}

void add_members(pugi::xml_node parent, const Xmldoc &document) {
    add_number(parent, "xtype", document.xtype);
    add_number(parent, "requst_id", document.requst_id);
    add_text(parent, "type", document.type);
    add_text(parent, "name", document.name);
    add_text(parent, "source", document.source);
    add_text(parent, "content", document.content);
    add_number(parent, "eUseFlag", document.eUseFlag);
}

} // namespace

// The terminator does not count as written. A document that does not fit is not written at all: out becomes an empty
// text and *room is unchanged, so the caller sends an empty body instead of half a document.
int Xml_Encode(pXmldoc document, char *out, int *room) {
    if (*room <= 0)
        return -1;
    out[0] = '\0';
    if (document == nullptr)
        return -1;
    pugi::xml_document tree;
    add_members(tree.append_child("document"), *document);
    BoundedWriter writer(out, static_cast<size_t>(*room) - 1);
    tree.save(writer, "", pugi::format_raw | pugi::format_no_declaration | pugi::format_skip_control_chars);
    if (!writer.complete()) {
        out[0] = '\0';
        return -1;
    }
    out[writer.length()] = '\0';
    *room -= static_cast<int>(writer.length());
    return 0;
}
