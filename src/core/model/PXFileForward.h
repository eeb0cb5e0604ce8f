#pragma once

#include <QList>

#include <memory>

// The file record's pointer type, for headers that pass records around without reading them;
// code that reads a record includes core/model/PXFile.h.
class PXFile;
using PXFilePtr = std::shared_ptr<PXFile>;
