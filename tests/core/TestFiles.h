// What the core suites share: readable QString failures and files as bytes.
#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <gtest/gtest.h>

#include <ostream>

// gtest would print a QString as its code units.
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

// A file that cannot be read gives a marker rather than no bytes, so it never passes for an
// empty file.
inline QByteArray readBytes(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

// Writes the bytes (none: an empty file), making its folder first.
inline void writeBytes(const QString& path, const QByteArray& bytes = {}) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath())) << path.toStdString();
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(f.write(bytes), bytes.size()) << path.toStdString();
}
