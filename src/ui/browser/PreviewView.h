#pragma once

#include "core/model/PXFileForward.h"

#include <QImage>
#include <QWidget>

// The preview beside the grid: the selected image scaled to fit, decoded on a worker at the size
// it is shown. The latest file wins: a result for a file no longer shown is dropped.
class PreviewView : public QWidget
{
    Q_OBJECT

public:
    explicit PreviewView(QWidget *parent = nullptr);

    void setFile(const PXFilePtr &file);
    const PXFilePtr &file() const { return m_file; }
    bool hasImage() const { return !m_image.isNull(); }

Q_SIGNALS:
    void imageShown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void load();

    PXFilePtr m_file;
    QImage m_image;
    QString m_message;
    quint64 m_generation = 0;
    QSize m_loadedFor;
};
