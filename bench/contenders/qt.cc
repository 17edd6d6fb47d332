// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Qt's QSettings.
#include <fcntl.h>
#include <sys/stat.h>

#include <QSettings>
#include <QString>
#include <QVariant>

#include "contender.h"

namespace {

/**
 * QSettings keeps small files in memory after the last object on them has gone, and reads them
 * again only when their size or time has changed. A new time, a second later each time, makes it
 * open the file anew like all the others.
 */
void forget(const char* path) {
  static timespec time = {1000000000, 0};
  ++time.tv_sec;
  const timespec times[] = {time, time};
  utimensat(AT_FDCWD, path, times, 0);
}

QString entry(const char* section, const char* key) {
  return QString::fromUtf8(section) + QLatin1Char('/') + QString::fromUtf8(key);
}

bool readValue(const char* path, const char* section, const char* key, char* value,
               std::size_t size) {
  forget(path);
  const QSettings settings(QString::fromUtf8(path), QSettings::IniFormat);
  const QVariant found = settings.value(entry(section, key));
  if (!found.isValid()) return false;
  const QByteArray text = found.toString().toUtf8();
  copyValue(value, size, text.constData(), static_cast<std::size_t>(text.size()));
  return true;
}

bool writeValue(const char* path, const char* section, const char* key, const char* value) {
  forget(path);
  QSettings settings(QString::fromUtf8(path), QSettings::IniFormat);
  settings.setValue(entry(section, key), QString::fromUtf8(value));
  settings.sync();
  return settings.status() == QSettings::NoError;
}

const Entered QT({"QSettings", readValue, writeValue});

}  // namespace
