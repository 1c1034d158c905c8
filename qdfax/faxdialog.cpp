#include "faxdialog.h"

#include "command.h"
#include "displaytext.h"
#include "faxorder.h"
#include "parsing.h"
#include "recordjson.h"
#include "session.h"
#include "text.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>

namespace {

const int longestName = 60; ///< Characters of the document's name that the dialog shows.

} // namespace

FaxDialog::FaxDialog(const Invocation& call, const QString& file, const QString& documentName,
                     QWidget* parent)
    : QDialog(parent)
    , m_call(call)
    , m_file(file)
    , m_number(new QLineEdit(this))
    , m_name(new QLineEdit(this))
    , m_progress(new QProgressBar(this))
    , m_text(new QLabel(this))
{
    setWindowTitle(Text::tr("New Fax"));
    setWindowIcon(QIcon(QStringLiteral(":/icons/new-fax-action-icon")));
    setWindowFlags(windowFlags() & ~Qt::WindowContextHelpButtonHint);

    auto* document = new QLabel(cutToWidth(printable(documentName), longestName), this);
    document->setTextFormat(Qt::PlainText);
    m_number->setObjectName(QStringLiteral("number"));
    m_name->setObjectName(QStringLiteral("name"));
    m_name->setPlaceholderText(Text::tr("may be left out"));
    m_text->setObjectName(QStringLiteral("text"));
    m_text->setTextFormat(Qt::PlainText); // contains untrusted text from servers
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setWordWrap(true);
    m_text->hide();
    m_progress->hide();

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    m_close = buttons->button(QDialogButtonBox::Close);
    m_send = buttons->addButton(Text::tr("Send"), QDialogButtonBox::ActionRole);
    m_send->setObjectName(QStringLiteral("send"));
    m_send->setDefault(true);

    auto* layout = new QFormLayout(this);
    layout->addRow(Text::tr("Document:"), document);
    layout->addRow(Text::tr("&Number:"), m_number);
    layout->addRow(Text::tr("N&ame:"), m_name);
    layout->addRow(m_progress);
    layout->addRow(m_text);
    layout->addRow(buttons);
    setMinimumWidth(420);

    connect(m_number, &QLineEdit::textChanged, this, &FaxDialog::checkInput);
    connect(m_name, &QLineEdit::textChanged, this, &FaxDialog::checkInput);
    connect(m_send, &QPushButton::clicked, this, &FaxDialog::send);
    connect(buttons, &QDialogButtonBox::rejected, this, &FaxDialog::reject);
    checkInput();
}

QString FaxDialog::recipient() const
{
    const auto escaped = [](QString text) {
        return text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
            .replace(QLatin1Char(','), QStringLiteral("\\,"));
    };
    const QString name = m_name->text().trimmed();
    const QString number = escaped(m_number->text().trimmed());
    return name.isEmpty() ? number : number + QLatin1Char(',') + escaped(name);
}

void FaxDialog::checkInput()
{
    QString error;
    const bool isGood = parseRecipient(recipient(), &error).has_value();
    m_send->setEnabled(isGood && !m_sending && !m_sent);
    m_send->setToolTip(isGood ? QString() : printable(error).toHtmlEscaped());
}

void FaxDialog::reject()
{
    if (!m_sending)
        QDialog::reject();
}

void FaxDialog::showText(const QString& text)
{
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    adjustSize();
}

void FaxDialog::showProgress(qint64 sent, qint64 total)
{
    m_progress->setRange(0, 100);
    m_progress->setValue(int(sent * 100 / total));
    showText(sent < total ? Text::tr("Sending %1 of %2").arg(sizeText(sent), sizeText(total))
                          : Text::tr("Sent %1, waiting for the server").arg(sizeText(total)));
}

void FaxDialog::send()
{
    m_sending = true;
    for (QWidget* widget : {static_cast<QWidget*>(m_number), static_cast<QWidget*>(m_name),
                            static_cast<QWidget*>(m_send), static_cast<QWidget*>(m_close)})
        widget->setEnabled(false);
    m_progress->setRange(0, 0);
    m_progress->show();

    QString text;
    m_status = submit(text);
    m_sending = false;
    m_sent = m_status == ExitStatus::Ok;
    m_progress->hide();
    m_close->setEnabled(true);
    m_number->setEnabled(!m_sent);
    m_name->setEnabled(!m_sent);
    checkInput();
    showText(printable(text));
    (m_sent ? m_close : m_send)->setFocus();
}

int FaxDialog::submit(QString& text)
{
    FaxOrder order;
    const auto contact = parseRecipient(recipient(), &text);
    if (!contact)
        return ExitStatus::Usage;
    order.recipients.addContact(*contact);
    order.files = QStringList{m_file};

    Session session(m_call);
    session.setQuiet(true);
    showText(Text::tr("Logging in"));
    if (!session.open()) {
        text = session.error();
        return session.status();
    }
    connect(&session.replies(), &ReplyWatch::uploading, this, &FaxDialog::showProgress);
    QString doubt;
    const auto entries = submitFax(session, order, &doubt);
    if (!entries) {
        text = session.error() + (doubt.isEmpty() ? QString() : QLatin1Char(' ') + doubt);
        return session.status();
    }
    text = Text::tr("%1 has taken the fax").arg(session.server().address());
    for (const auto& entry : qAsConst(*entries))
        text += QStringLiteral("; %1: %2").arg(stateForPeople(entry->state()), urlText(entry->entryUrl()));
    return ExitStatus::Ok;
}
