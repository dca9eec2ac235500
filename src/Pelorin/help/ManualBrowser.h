#pragma once

#include <QTextBrowser>
#include <QTimer>

/// Shows the pages of the manual and nothing else: a link that leads anywhere else is not followed, and no
/// other file and no network is ever touched for what a page may contain. A page that cannot be shown is
/// replaced by words that tell what is missing.
class ManualBrowser : public QTextBrowser
{
    Q_OBJECT

public:
    explicit ManualBrowser(QWidget* parent = nullptr);

    /// The contents page where no page can have this name.
    void showPage(const QString& page);
    /// The page shown, or nothing before the first one.
    QString page() const;
    /// The first heading of the page shown.
    QString heading() const;

    QVariant loadResource(int type, const QUrl& name) override;

public slots:
    /// To the contents page.
    void home() override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void follow(const QUrl& link);
    void setPage();
    void fitPictures();

    QTimer m_fitSoon;
    int m_fittedWidth = 0;
};
