// The contacts of a server, searched while typing: findcontacts ADDRESS LOGIN PASSWORD [--grab FILE]
//
// The contact manager caches the books in a local database, which background threads update; the window only
// queries the database. F5 synchronises again. With --grab it saves a screenshot after the first
// synchronisation and exits; if that fails, it exits with status 1.

#include "contact.h"
#include "contactgroup.h"
#include "contactmanager.h"
#include "faxmanager.h"
#include "faxserver.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QShortcut>
#include <QStatusBar>
#include <QTableWidget>
#include <QVBoxLayout>

class FindContacts : public QMainWindow
{
public:
    explicit FindContacts(ContactManager& contacts)
        : m_contacts(contacts)
    {
        auto* page = new QWidget(this);
        auto* layout = new QVBoxLayout(page);
        layout->addWidget(m_text);
        layout->addWidget(m_table);
        setCentralWidget(page);
        resize(640, 400);

        m_text->setPlaceholderText(tr("Search names"));
        statusBar()->addPermanentWidget(m_status);
        m_table->setHorizontalHeaderLabels({tr("Name"), tr("Organization"), tr("Fax")});
        m_table->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);

        //! [search]
        // resultOfQuickSearch() is emitted before quickSearch() returns.
        connect(m_text, &QLineEdit::textChanged, this, &FindContacts::search);
        connect(&m_contacts, &ContactManager::resultOfQuickSearch, this, &FindContacts::list);
        connect(&m_contacts, &ContactManager::onSyncStart, this,
                [this] { statusBar()->showMessage(tr("Synchronising…")); });
        connect(&m_contacts, &ContactManager::onSyncStop, this, [this] {
            statusBar()->clearMessage();
            search();
        });
        //! [search]
        auto* again = new QShortcut(QKeySequence::Refresh, this);
        connect(again, &QShortcut::activated, this, &FindContacts::synchronise);
        search();
    }

    /// Shows the status of the last request.
    void setStatus(Task::Status status)
    {
        m_status->setText(status == Task::Ok ? QString()
                                             : tr("Failed: %1").arg(QVariant::fromValue(status).toString()));
    }

private:
    void search() { m_contacts.quickSearch(m_text->text(), 100, 0, 0); }

    //! [synchronise]
    void synchronise()
    {
        const auto providers = m_contacts.providers(); // one per server, and Outlook's
        for (const auto& provider : providers) {
            if (!provider || provider->isSync())
                continue;
            const auto books = provider->contactsTypeList();
            for (const auto book : books)
                provider->syncContacts(book, false); // only changes; true: everything
        }
    }
    //! [synchronise]

    //! [list]
    void list(const QuickSearchResalt& found)
    {
        m_table->setRowCount(0);
        for (auto it = found.cbegin(); it != found.cend(); ++it) {
            const auto unit = m_contacts.getContactById(it.key());
            const auto contact = unit.dynamicCast<Contact>(); // null for a group
            const int row = m_table->rowCount();
            m_table->insertRow(row);
            m_table->setItem(row, 0, new QTableWidgetItem(it.value()));
            m_table->setItem(row, 1,
                             new QTableWidgetItem(contact ? contact->organization() : tr("(a group)")));
            m_table->setItem(row, 2, new QTableWidgetItem(contact ? contact->fax() : QString()));
        }
    }
    //! [list]

    ContactManager& m_contacts;
    QLineEdit* m_text = new QLineEdit;
    QTableWidget* m_table = new QTableWidget(0, 3);
    QLabel* m_status = new QLabel;
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 4)
        qFatal("usage: findcontacts ADDRESS LOGIN PASSWORD [--grab FILE]");

    //! [cache]
    ContactManager contacts; // created before the fax manager, and destroyed after it
    FaxManager manager{QPointer<ContactManager>(&contacts)};
    // logs in, then synchronises
    QPointer<FaxServer> server = manager.addServer(arguments[1], false, arguments[2], arguments[3]);
    //! [cache]

    FindContacts window(contacts);
    window.show();
    QObject::connect(server, &FaxServer::changedLastStatus, &window, &FindContacts::setStatus);
    const int grab = arguments.indexOf(QStringLiteral("--grab"));
    if (grab > 0) {
        QObject::connect(&contacts, &ContactManager::onSyncStop, &window,
                         [&] { app.exit(window.grab().save(arguments.value(grab + 1)) ? 0 : 1); });
        QObject::connect(server, &FaxServer::changedLastStatus, &window, [&](Task::Status status) {
            if (status != Task::Ok)
                app.exit(1);
        });
    }
    return app.exec();
}
