#pragma once

#include <QChar>
#include <QList>
#include <QString>

namespace quillon {

// How Wine shows the Linux file system to a Windows program: the drives of
// one prefix, read once from its dosdevices folder (each link "x:" names a
// drive and points at its folder), and the Windows form of a Linux path.
class WinePaths final {
public:
    struct Drive {
        QChar letter; // upper case
        QString root; // the folder, absolute and clean ("/" for the whole tree)
    };

    // The prefix Wine uses when `given` is empty: $WINEPREFIX, else ~/.wine.
    static QString effectivePrefix(const QString& given);

    // Reads PREFIX/dosdevices: every link named a letter and a colon that
    // leads to a folder, by its target as written and as resolved. A prefix
    // Wine has not made yet gets the drive Wine gives every new prefix,
    // Z: for "/".
    static WinePaths read(const QString& prefix);

    // The Windows form of an absolute Linux path: the drive whose folder
    // covers it (the deepest such folder; between equal folders the first
    // letter), then the rest of the path with backslashes ("/srv/out/a.png"
    // with Z: at "/" gives "Z:\srv\out\a.png"). An empty path stays empty.
    // Empty with *error when the path is relative, no drive covers it, or a
    // name in it holds a character a Windows path cannot (\ : * ? " < > |).
    QString windowsPath(const QString& path, QString* error = nullptr) const;

    const QString& prefix() const { return m_prefix; }
    const QList<Drive>& drives() const { return m_drives; }

private:
    QString m_prefix;
    QList<Drive> m_drives; // by letter; a letter may appear twice (as written, as resolved)
};

} // namespace quillon
