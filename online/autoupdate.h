#pragma once

#include <QObject>
#include <QString>

class QNetworkAccessManager;
class QNetworkReply;

/// Asks once a week, where the setting "update/url" names an address, whether there is a newer version. It
/// tells and installs nothing. What goes wrong is only logged (pellandra.update).
///
/// The address is that of a listing: any text in which installers are named as program-system-N1.N2.N3.exe.
class autoUpdate : public QObject
{
    Q_OBJECT

public:
    /// `runningVersion` is a name, a blank and a number.
    explicit autoUpdate(const QString& runningVersion, QObject* parent = nullptr);
    ~autoUpdate() override;

    /// Begins the check in the background if it is due. The setting "update/date" is the first day of the
    /// next.
    void checkLastVersion();
    /// A file name of the listing: the newest installer is remembered.
    void updateLatestVersion(const QString& version);
    /// The newest version that was listed, empty if none is newer than the running one.
    QString newerVersion() const { return highestVersionName; }

    /// A version as a number that grows with it: (N1 × 100 + N2) × 100 + N3, and 0.1 for each letter up to
    /// that behind N3, "a" to "g". −1 for what is no version.
    static float hash(const QString& version);

Q_SIGNALS:
    /// `page` is the address of the listing.
    void newerFound(const QString& version, const QString& page);
    /// The check is over, whatever came of it.
    void checked();

private:
    void readListing(QNetworkReply* reply);

    QString currentName;
    float currentHash = -1;
    float highestHash = -1;
    QString highestVersionName;
    QNetworkAccessManager* network = nullptr; ///< made for a check
};
