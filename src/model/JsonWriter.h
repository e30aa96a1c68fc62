#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace orvan {

/// A small JSON writer for the one layout the files use (sorted keys are the caller's order,
/// two-space indent, `"key" : value`). Qt's own indented output uses four spaces and
/// no space before the colon, so it cannot produce these bytes.
class JsonWriter {
public:
    void openArray() { open('['); }
    void closeArray() { close(']'); }
    void openObject() { open('{'); }
    void closeObject() { close('}'); }

    /// Starts a member of the current object; the value follows.
    void key(const QString& name)
    {
        nextItem();
        string(name);
        m_out += " : ";
    }
    /// Starts an element of the current array.
    void element() { nextItem(); }

    void value(bool b) { m_out += b ? "true" : "false"; }
    void value(qint64 n) { m_out += QByteArray::number(n); }
    void value(const QString& s) { string(s); }

    QByteArray take() { return std::move(m_out); }

private:
    static constexpr int kIndentWidth = 2;

    struct Level {
        bool empty = true;
    };

    void open(char bracket)
    {
        m_out += bracket;
        m_levels.push_back({});
    }
    void close(char bracket)
    {
        const bool empty = m_levels.back().empty;
        m_levels.pop_back();
        if (!empty) {
            m_out += '\n';
            indent();
        }
        m_out += bracket;
    }
    void nextItem()
    {
        Level& level = m_levels.back();
        if (!level.empty)
            m_out += ',';
        level.empty = false;
        m_out += '\n';
        indent();
    }
    void indent() { m_out.append(qsizetype(m_levels.size()) * kIndentWidth, ' '); }

    void string(const QString& s)
    {
        // Escaping works on the UTF-8 bytes: every byte that needs it is ASCII, and the bytes of a
        // multi-byte character are all 0x80 or above.
        constexpr unsigned char kFirstPrintable = 0x20;
        m_out += '"';
        for (const char ch : s.toUtf8()) {
            switch (ch) {
            case '"': m_out += "\\\""; break;
            case '\\': m_out += "\\\\"; break;
            case '\n': m_out += "\\n"; break;
            case '\r': m_out += "\\r"; break;
            case '\t': m_out += "\\t"; break;
            case '\b': m_out += "\\b"; break;
            case '\f': m_out += "\\f"; break;
            default:
                if (static_cast<unsigned char>(ch) < kFirstPrintable)
                    m_out += "\\u" + QByteArray::number(static_cast<unsigned char>(ch), 16).rightJustified(4, '0');
                else
                    m_out += ch;
            }
        }
        m_out += '"';
    }

    QByteArray m_out;
    std::vector<Level> m_levels;
};

} // namespace orvan
