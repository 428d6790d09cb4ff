#include "MiniXml.h"

#include <cstdint>
#include <cstring>

namespace standin {

namespace {

// Deep enough for any control or run file; a deeper document is refused
// rather than exhausting the stack.
constexpr int kMaxDepth = 1000;

class Parser {
public:
    explicit Parser(const std::string& text)
        : m_text(text)
    {
    }

    bool document(XmlElement* root, std::string* error)
    {
        if (m_text.compare(0, 3, "\xEF\xBB\xBF") == 0)
            m_at = 3;
        if (!skipMisc() || !element(root, 0) || !skipMisc() || m_at != m_text.size()) {
            *error = m_error.empty() ? "unexpected content at offset " + std::to_string(m_at) : m_error;
            return false;
        }
        return true;
    }

private:
    bool fail(const char* what)
    {
        if (m_error.empty())
            m_error = std::string(what) + " at offset " + std::to_string(m_at);
        return false;
    }

    bool startsWith(const char* prefix) const
    {
        return m_text.compare(m_at, std::strlen(prefix), prefix) == 0;
    }

    void skipSpace()
    {
        while (m_at < m_text.size() && std::strchr(" \t\r\n", m_text[m_at]) && m_text[m_at] != '\0')
            ++m_at;
    }

    bool skipPast(const char* end)
    {
        const std::size_t found = m_text.find(end, m_at);
        if (found == std::string::npos)
            return fail("unterminated markup");
        m_at = found + std::strlen(end);
        return true;
    }

    // Comments, processing instructions, the document type and white space.
    bool skipMisc()
    {
        for (;;) {
            skipSpace();
            if (startsWith("<?")) {
                if (!skipPast("?>"))
                    return false;
            } else if (startsWith("<!--")) {
                if (!skipPast("-->"))
                    return false;
            } else if (startsWith("<!DOCTYPE")) {
                int depth = 0;
                for (; m_at < m_text.size(); ++m_at) {
                    const char c = m_text[m_at];
                    if (c == '[')
                        ++depth;
                    else if (c == ']')
                        --depth;
                    else if (c == '>' && depth <= 0)
                        break;
                }
                if (m_at >= m_text.size())
                    return fail("unterminated document type");
                ++m_at;
            } else {
                return true;
            }
        }
    }

    static bool isNameChar(char c) { return !std::strchr(" \t\r\n/>=<\"'", c) && c != '\0'; }

    bool name(std::string* out)
    {
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && isNameChar(m_text[m_at]))
            ++m_at;
        if (m_at == begin)
            return fail("a name was expected");
        out->assign(m_text, begin, m_at - begin);
        return true;
    }

    static void appendUtf8(std::string* out, std::uint32_t code)
    {
        if (code < 0x80) {
            *out += static_cast<char>(code);
        } else if (code < 0x800) {
            *out += static_cast<char>(0xC0 | (code >> 6));
            *out += static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            *out += static_cast<char>(0xE0 | (code >> 12));
            *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            *out += static_cast<char>(0x80 | (code & 0x3F));
        } else {
            *out += static_cast<char>(0xF0 | (code >> 18));
            *out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            *out += static_cast<char>(0x80 | (code & 0x3F));
        }
    }

    // An attribute value with its references resolved.
    bool value(std::string* out)
    {
        if (m_at >= m_text.size() || (m_text[m_at] != '"' && m_text[m_at] != '\''))
            return fail("a quoted value was expected");
        const char quote = m_text[m_at++];
        const std::size_t end = m_text.find(quote, m_at);
        if (end == std::string::npos)
            return fail("unterminated value");
        out->clear();
        while (m_at < end) {
            const char c = m_text[m_at];
            if (c != '&') {
                // Line ends count as one character, and white space becomes a
                // space, as conforming parsers read attribute values.
                if (c == '\r' && m_at + 1 < end && m_text[m_at + 1] == '\n')
                    ++m_at;
                *out += c == '\t' || c == '\r' || c == '\n' ? ' ' : c;
                ++m_at;
                continue;
            }
            const std::size_t semicolon = m_text.find(';', m_at);
            if (semicolon == std::string::npos || semicolon > end)
                return fail("unterminated reference");
            const std::string entity = m_text.substr(m_at + 1, semicolon - m_at - 1);
            if (entity == "amp")
                *out += '&';
            else if (entity == "lt")
                *out += '<';
            else if (entity == "gt")
                *out += '>';
            else if (entity == "quot")
                *out += '"';
            else if (entity == "apos")
                *out += '\'';
            else if (entity.size() > 1 && entity[0] == '#') {
                const bool hex = entity[1] == 'x';
                const std::string digits = entity.substr(hex ? 2 : 1);
                std::uint32_t code = 0;
                for (const char d : digits) {
                    const int v = d >= '0' && d <= '9' ? d - '0'
                        : hex && d >= 'a' && d <= 'f'  ? d - 'a' + 10
                        : hex && d >= 'A' && d <= 'F'  ? d - 'A' + 10
                                                       : -1;
                    if (v < 0 || code > 0x10FFFF)
                        return fail("bad character reference");
                    code = code * (hex ? 16 : 10) + static_cast<std::uint32_t>(v);
                }
                if (digits.empty() || code > 0x10FFFF)
                    return fail("bad character reference");
                appendUtf8(out, code);
            } else {
                return fail("unknown entity");
            }
            m_at = semicolon + 1;
        }
        m_at = end + 1;
        return true;
    }

    bool element(XmlElement* out, int depth)
    {
        if (depth > kMaxDepth)
            return fail("too deeply nested");
        if (m_at >= m_text.size() || m_text[m_at] != '<')
            return fail("an element was expected");
        ++m_at;
        if (!name(&out->name))
            return false;
        for (;;) {
            skipSpace();
            if (startsWith("/>")) {
                m_at += 2;
                return true;
            }
            if (startsWith(">")) {
                ++m_at;
                break;
            }
            std::pair<std::string, std::string> attribute;
            if (!name(&attribute.first))
                return false;
            skipSpace();
            if (!startsWith("="))
                return fail("'=' was expected");
            ++m_at;
            skipSpace();
            if (!value(&attribute.second))
                return false;
            out->attributes.push_back(std::move(attribute));
        }
        // Content: child elements; text and the rest are skipped.
        for (;;) {
            const std::size_t open = m_text.find('<', m_at);
            if (open == std::string::npos)
                return fail("unterminated element");
            m_at = open;
            if (startsWith("</")) {
                m_at += 2;
                std::string closing;
                if (!name(&closing) || closing != out->name)
                    return fail("mismatched end tag");
                skipSpace();
                if (!startsWith(">"))
                    return fail("'>' was expected");
                ++m_at;
                return true;
            }
            if (startsWith("<!--")) {
                if (!skipPast("-->"))
                    return false;
            } else if (startsWith("<![CDATA[")) {
                if (!skipPast("]]>"))
                    return false;
            } else if (startsWith("<?")) {
                if (!skipPast("?>"))
                    return false;
            } else {
                out->children.emplace_back();
                if (!element(&out->children.back(), depth + 1))
                    return false;
            }
        }
    }

    const std::string& m_text;
    std::size_t m_at = 0;
    std::string m_error;
};

} // namespace

std::string XmlElement::attribute(const char* key) const
{
    for (const auto& [attributeName, value] : attributes) {
        if (attributeName == key)
            return value;
    }
    return {};
}

const XmlElement* XmlElement::child(const char* key) const
{
    for (const XmlElement& element : children) {
        if (element.name == key)
            return &element;
    }
    return nullptr;
}

bool parseXml(const std::string& text, XmlElement* root, std::string* error)
{
    *root = XmlElement();
    return Parser(text).document(root, error);
}

} // namespace standin
