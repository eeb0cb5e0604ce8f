#include "inspector/InspectorViewController.h"

InspectorViewController::InspectorViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(std::move(settings))
{
}

InspectorViewController::~InspectorViewController() = default;

void InspectorViewController::setFiles(const QList<PXFilePtr> &files)
{
    m_files = files;
}
