#pragma once

#include <QCoreApplication>
#include <QString>

// Translates the texts users see in the translation context it names, as a QObject's tr() does for
// its class. A file that is no QObject's declares one at file scope and writes tr("...") as a
// class would:
//     namespace {
//     constexpr Translator tr("FileSortTypes");
//     }
class Translator
{
public:
    constexpr explicit Translator(const char *context)
        : m_context(context)
    { }

    // `n` picks the plural form of a text with "%n"; -1 for none.
    QString operator()(const char *text, const char *disambiguation = nullptr, int n = -1) const
    {
        return QCoreApplication::translate(m_context, text, disambiguation, n);
    }

private:
    const char *m_context;
};
