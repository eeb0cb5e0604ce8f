#pragma once

#include <QStringList>

// `pixcove-cli thumbs`: the thumbnails a grid would show for files, made through the same
// generator and system thumbnailer (filling the thumbnail cache), with the throughput.
int runThumbsCommand(const QStringList &args);
