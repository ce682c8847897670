#pragma once

#include <QUrl>

// The addresses behind the About box's links.
class AboutLinks {
public:
    static QUrl authorHomePage();
    // A new mail message to the author, its subject the product's name.
    static QUrl mail();
    // The donation page: amounts in US dollars, no note field, no tax.
    static QUrl donation();
    static QUrl relatedSiteOne();
    static QUrl relatedSiteTwo();
};
