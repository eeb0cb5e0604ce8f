#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>

// Colour labels as the desktop's file managers keep them: a tag named after the colour ("Red",
// "Orange", "Yellow", "Green", "Blue", "Purple", "Gray") among the comma-separated tags of the
// "user.xdg.tags" extended attribute. Other tags are the user's and are kept as they are, in their
// order, byte for byte.
//
// A label has a value for sorting (0 without a label, 1 Gray ... 7 Orange, the order the sort by
// label has always used) and a place in menus (Red first, Gray last).
namespace ColorLabels {

constexpr const char *tagsAttribute = "user.xdg.tags";

struct Label
{
    int value = 0; // 1..7
    const char *name = ""; // the tag, untranslated: "Red"
    QColor colour;
};

// The seven labels in menu order: Red, Orange, Yellow, Green, Blue, Purple, Gray.
const QList<Label> &labels();
// The label with sort value `value`; null for 0 or an unknown value.
const Label *labelForValue(int value);
// Translated name ("Red"); empty for 0.
QString title(int value);

// Splits the attribute's text into its tags; empty tags are dropped, the others kept untrimmed.
QStringList tagsFromAttribute(const QByteArray &value);
QByteArray attributeFromTags(const QStringList &tags);
// The label of the first colour tag (compared trimmed and without case), else 0.
int labelValueOfTags(const QStringList &tags);
// `tags` with every colour tag removed and, unless `value` is 0, the label's tag appended.
QStringList tagsWithLabel(const QStringList &tags, int value);

// Reads the file's label (0 without one or when the file keeps no attributes). Any thread.
int readLabel(const QByteArray &nativePath);
// Gives the file the label `value` (0 removes it), keeping its other tags. False with a message
// when the attribute cannot be written; the file is then unchanged. Any thread, never the GUI's:
// it reads and writes the disk.
bool writeLabel(const QByteArray &nativePath, int value, QString *error);

} // namespace ColorLabels
