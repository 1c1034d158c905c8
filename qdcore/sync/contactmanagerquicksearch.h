#pragma once

#include "qdcore_global.h"
#include "quicksearchresalt.h"

#include <QObject>

/// The interface of a search worker of an application's own: its result can be connected on to a
/// ContactManager.
class QDCORE_EXPORT ContactManagerQuickSearch : public QObject
{
    Q_OBJECT
public:
    /// Searches nothing by itself: a derived class does.
    explicit ContactManagerQuickSearch(QObject* parent = nullptr)
        : QObject(parent)
    {}

Q_SIGNALS:
    /// What was found; emitted by the derived class.
    void resultOfQuickSearch(QuickSearchResalt searchResult);
};
