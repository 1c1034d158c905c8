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
 * A dialog that asks for a fax's recipient (number and name), sends the fax, and shows the progress and the
 * result. Stays open after a failure, for another try. Cannot be closed while sending.
 */
class FaxDialog : public QDialog
{
    Q_OBJECT

public:
    /// @p call has the options for the server and the time-out.
    FaxDialog(const Invocation& call, const QString& file, const QString& documentName,
              QWidget* parent = nullptr);

    /// The exit status of the last try; Ok before the first.
    int status() const { return m_status; }

public Q_SLOTS:
    void reject() override;

private:
    /// The recipient as typed, in the syntax of the command line.
    QString recipient() const;
    void checkInput();
    void send();
    /// Sends; returns the exit status and, in @p text, the message for the user.
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
