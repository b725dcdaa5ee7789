#pragma once

#include "koGlobal.h"

#include <QMetaType>
#include <QObject>

namespace koReferenceTypes {
Q_NAMESPACE_EXPORT(KOVIS_EXPORT)

enum State { Loaded = 0, Unloaded = 1 };
Q_ENUM_NS(State)

enum FileState { UpToDate = 0, OutOfDate = 1, Missing = 2, Unsaved = 3, NoFile = 4 };
Q_ENUM_NS(FileState)

// Where a new smart file is placed; the values are the rows of the location choice.
enum ExportLocation { NextToSourceFile = 0, CustomFolder = 1 };
Q_ENUM_NS(ExportLocation)

} // namespace koReferenceTypes
