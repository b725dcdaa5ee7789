#pragma once

#include <QString>
#include <QStringList>

class koTestHost;

// The plant the benchmarks work on: 100 assemblies of 10 sub-assemblies of parts (100
// by default), each part a reference with an empty smart and source file of its own.
class koBenchScene
{
public:
    static constexpr int assemblies = 100;
    static constexpr int subAssemblies = 10;

    // The parts per sub-assembly that "--parts N" asks for (smaller scenes for profiling).
    static int partsFrom(const QStringList& arguments);
    // Writes the files and the project into the host's folder; returns the project's path.
    static QString write(const koTestHost& host, int parts);
};
