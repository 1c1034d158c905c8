#pragma once

#include "iquendraserialization.h"
#include "iquendrastorage.h"
#include "qdcore_global.h"

#include <QMetaType>
#include <QString>

/**
 * The identity of a fax server, and the protocol version that follows from it.
 *
 * Contains the fields of the "about" document. A value; initially its fields are empty and its protocol
 * version is 1. The settings file contains all fields but the uptime, which is soon out of date.
 */
class QDCORE_EXPORT QuendraInfo : public IQuendraSerialization, public IQuendraStorage
{
public:
    /// Element "model": the server's model designation. Required when reading.
    const QString& model() const { return m_model; }
    /// Element "version": the firmware version, dotted numbers such as "2.0.3". Required when reading.
    const QString& version() const { return m_version; }
    /// Element "serial": the serial number of the unit.
    const QString& serial() const { return m_serial; }
    /// Element "hostname".
    const QString& hostname() const { return m_hostname; }
    /// Element "description": free text of the administrator.
    const QString& description() const { return m_description; }
    /// Element "channels": the number of fax channels, as the server's text.
    const QString& channels() const { return m_channels; }
    /// Element "uptime", as the server's text.
    const QString& uptime() const { return m_uptime; }

    /// 1 or 2; determines which elements are exchanged. Set by the last computeProtocolVersion().
    int protocolVersion() const { return m_protocolVersion; }

    //@{
    /// Does not update the protocol version; call computeProtocolVersion().
    void setModel(const QString& model);
    void setVersion(const QString& version);
    void setSerial(const QString& serial);
    void setHostname(const QString& hostname);
    void setDescription(const QString& description);
    void setChannels(const QString& channels);
    void setUptime(const QString& uptime);
    //@}

    /// Computes the protocol version from model and version. The read functions call it.
    void computeProtocolVersion();

    /// Reads the children of the reply's root element. False, with nothing changed, without "model" or
    /// "version".
    bool readFax(const QDomElement& element, int protocolVersion) override;
    /// Not supported: false.
    bool writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;
    /// As readFax().
    bool readStorage(const QDomElement& element, int protocolVersion) override;
    /// Writes the fields that are not empty, without the uptime. Always true.
    bool writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const override;

private:
    QString m_model;
    QString m_version;
    QString m_serial;
    QString m_hostname;
    QString m_description;
    QString m_channels;
    QString m_uptime;
    int m_protocolVersion{1};
};

Q_DECLARE_METATYPE(QuendraInfo)
