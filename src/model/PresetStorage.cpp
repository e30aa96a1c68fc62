#include "PresetStorage.h"

#include "AtomicFile.h"
#include "DeviceSpec.h"
#include "PresetJson.h"

#include <QDir>

namespace orvan::PresetStorage {

namespace {

const QString kFolderName = QStringLiteral("OrvanRCU");
const QString kDefaultDataHome = QStringLiteral(".local/share");

QString dataHome()
{
    // A relative XDG_DATA_HOME is invalid and must be ignored.
    const QString xdg = qEnvironmentVariable("XDG_DATA_HOME");
    if (!xdg.isEmpty() && QDir::isAbsolutePath(xdg))
        return xdg;
    return QDir::home().filePath(kDefaultDataHome);
}

} // namespace

QString url(const DeviceSpec& spec)
{
    const QString folder = QDir(dataHome()).filePath(kFolderName);
    QDir().mkpath(folder); // an existing or uncreatable folder is no error here
    return QDir(folder).filePath(spec.presetFile);
}

void save(const Presets& presets, const DeviceSpec& spec)
{
    const QByteArray bytes = PresetJson::encode(presets);
    if (bytes.isEmpty())
        return;
    AtomicFile::write(url(spec), bytes);
}

Presets load(const DeviceSpec& spec)
{
    const auto bytes = AtomicFile::readRegular(url(spec), kLargestFile);
    if (!bytes)
        return {};
    return PresetJson::decode(*bytes).value_or(Presets{});
}

} // namespace orvan::PresetStorage
