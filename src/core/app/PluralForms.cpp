#include "core/app/PluralForms.h"

#include "core/app/Log.h"

#include <QCoreApplication>
#include <QTranslator>

namespace PluralForms {

void install()
{
    static QTranslator *forms = nullptr;
    if (forms)
        return;
    forms = new QTranslator(QCoreApplication::instance());
    if (!forms->load(QStringLiteral(":/i18n/pixcove_en.qm"))) {
        logError(QStringLiteral("The English plural forms could not be loaded: counts read \"file(s)\""));
        return;
    }
    QCoreApplication::installTranslator(forms);
}

} // namespace PluralForms
