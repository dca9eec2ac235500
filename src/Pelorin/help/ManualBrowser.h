#pragma once

#include <QTextBrowser>

/// Shows the pages of the manual and nothing else: a link that leads anywhere else is not followed, and no
/// file and no network is ever touched for what a page may contain.
class ManualBrowser : public QTextBrowser
{
    Q_OBJECT

public:
    explicit ManualBrowser(QWidget* parent = nullptr);

    /// The contents page where there is no page of this name.
    void showPage(const QString& page);
    /// The page shown, or nothing before the first one.
    QString page() const;
    /// The first heading of the page shown.
    QString heading() const;

    QVariant loadResource(int type, const QUrl& name) override;

public slots:
    void setSource(const QUrl& name) override;
    /// To the contents page.
    void home() override;
};
