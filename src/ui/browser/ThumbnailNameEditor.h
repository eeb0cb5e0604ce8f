#pragma once

#include <QLineEdit>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QString>

class QAbstractScrollArea;

// The line edit over an item's name in the grid. It opens with the name, the part before the
// extension selected; Return or leaving it commits, Escape cancels; it follows its item as the
// grid scrolls. It goes away with the grid without committing.
class ThumbnailNameEditor : public QObject
{
    Q_OBJECT

public:
    // The editor is drawn in `view`'s viewport; `view` takes the focus back when it closes.
    explicit ThumbnailNameEditor(QAbstractScrollArea *view);
    ~ThumbnailNameEditor() override;

    bool isOpen() const { return m_editor != nullptr; }
    int index() const { return m_index; }
    void open(int index, const QString &name, const QRect &rect);
    void move(QPoint topLeft);
    // Closes the editor; with `commit`, reports its text.
    void close(bool commit);

Q_SIGNALS:
    void committed(int index, const QString &text);

private:
    QAbstractScrollArea *m_view;
    QPointer<QLineEdit> m_editor;
    int m_index = -1;
};
