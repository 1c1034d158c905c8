#pragma once

#include <QDialog>
#include <QString>

class Invocation;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;

/**
 * Asks for the recipient of a fax, and sends it: a number and a name, then how far it is, then what the
 * server made of it. Stays open when that fails, so that one can try again. Not to be closed while it sends.
 */
class FaxDialog : public QDialog
{
    Q_OBJECT

public:
    /// @p call says which server, and how long to wait for it.
    FaxDialog(const Invocation& call, const QString& file, const QString& documentName,
              QWidget* parent = nullptr);

    /// The exit status of the last try; Ok when there was none.
    int status() const { return m_status; }

public Q_SLOTS:
    void reject() override;

private:
    /// What was typed, in the form of the command line.
    QString recipient() const;
    void checkInput();
    void send();
    /// Sends, and returns the exit status and, in @p text, what to tell.
    int submit(QString& text);
    void showProgress(qint64 sent, qint64 total);
    void showText(const QString& text);

    const Invocation& m_call;
    QString m_file;
    int m_status{0};
    bool m_sending{false};
    bool m_sent{false};
    QLineEdit* m_number;
    QLineEdit* m_name;
    QProgressBar* m_progress;
    QLabel* m_text;
    QPushButton* m_send;
    QPushButton* m_close;
};
