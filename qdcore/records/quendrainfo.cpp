#include "quendrainfo.h"

#include "domtext_p.h"

#include <QDomDocument>
#include <QStringList>

namespace {

/// Whether dotted version @p a is at least @p b, comparing only the components that both have: "1" is at
/// least "1.4".
bool isAtLeast(const QString& a, const QString& b)
{
    const QStringList partsOfA = a.split(QLatin1Char('.'));
    const QStringList partsOfB = b.split(QLatin1Char('.'));
    const int common = qMin(partsOfA.size(), partsOfB.size());
    for (int i = 0; i < common; ++i) {
        // A component that is not a number converts to 0.
        const uint partOfA = partsOfA.at(i).toUInt();
        const uint partOfB = partsOfB.at(i).toUInt();
        if (partOfA != partOfB)
            return partOfA > partOfB;
    }
    return true;
}

} // namespace

void QuendraInfo::setModel(const QString& model)
{
    m_model = model;
}

void QuendraInfo::setVersion(const QString& version)
{
    m_version = version;
}

void QuendraInfo::setSerial(const QString& serial)
{
    m_serial = serial;
}

void QuendraInfo::setHostname(const QString& hostname)
{
    m_hostname = hostname;
}

void QuendraInfo::setDescription(const QString& description)
{
    m_description = description;
}

void QuendraInfo::setChannels(const QString& channels)
{
    m_channels = channels;
}

void QuendraInfo::setUptime(const QString& uptime)
{
    m_uptime = uptime;
}

void QuendraInfo::computeProtocolVersion()
{
    const bool isSeries40 = m_model.midRef(3, 2) == QLatin1String("40");
    m_protocolVersion = isSeries40 && isAtLeast(m_version, QStringLiteral("1.4")) ? 2 : 1;
}

bool QuendraInfo::readFax(const QDomElement& element, int protocolVersion)
{
    Q_UNUSED(protocolVersion)
    const DomChildren children(element);
    if (!children.has(QStringLiteral("model")) || !children.has(QStringLiteral("version")))
        return false;

    children.read(QStringLiteral("model"), m_model);
    children.read(QStringLiteral("version"), m_version);
    computeProtocolVersion();
    children.read(QStringLiteral("serial"), m_serial);
    children.read(QStringLiteral("hostname"), m_hostname);
    children.read(QStringLiteral("description"), m_description);
    children.read(QStringLiteral("channels"), m_channels);
    children.read(QStringLiteral("uptime"), m_uptime);
    return true;
}

bool QuendraInfo::writeFax(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    Q_UNUSED(document)
    Q_UNUSED(parent)
    Q_UNUSED(protocolVersion)
    return false;
}

bool QuendraInfo::readStorage(const QDomElement& element, int protocolVersion)
{
    return readFax(element, protocolVersion);
}

bool QuendraInfo::writeStorage(QDomDocument& document, QDomElement& parent, int protocolVersion) const
{
    Q_UNUSED(protocolVersion)
    appendTextIfSet(document, parent, QStringLiteral("model"), m_model);
    appendTextIfSet(document, parent, QStringLiteral("version"), m_version);
    appendTextIfSet(document, parent, QStringLiteral("serial"), m_serial);
    appendTextIfSet(document, parent, QStringLiteral("hostname"), m_hostname);
    appendTextIfSet(document, parent, QStringLiteral("description"), m_description);
    appendTextIfSet(document, parent, QStringLiteral("channels"), m_channels);
    return true;
}
