#include "help/PageStyle.h"

#include <QPalette>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>
#include <QTextTable>

namespace {
constexpr qreal pageMargin = 16;
constexpr qreal paragraphGap = 9;
constexpr qreal itemGap = 4;
constexpr qreal cellPadding = 5;
constexpr qreal codeMargin = 18;
constexpr qreal lineHeightPercent = 118;

/// The framework needs an empty line behind a table and keeps it when text follows.
bool isLeftBehindTable(const QTextBlock& block)
{
    return block.text().isEmpty() && QTextCursor(block).currentTable() == nullptr;
}

/// A code block is as many text blocks as it has lines.
bool isCode(const QTextBlock& block)
{
    return block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

void setCode(QTextBlockFormat& format, const QTextBlock& block)
{
    const bool isLast = !isCode(block.next());
    format.setTopMargin(0);
    format.setBottomMargin(isLast ? paragraphGap : 0);
    format.setLeftMargin(codeMargin);
    if (isLast && block.text().isEmpty()) {
        // Not every version of the framework leaves the end of the last line away.
        format.setLineHeight(1, QTextBlockFormat::FixedHeight);
    }
}

bool endsList(const QTextBlock& block)
{
    return block.textList() != block.next().textList();
}

void setBlock(const QTextBlock& block)
{
    QTextBlockFormat format = block.blockFormat();
    const bool isFirst = block.blockNumber() == 0;
    if (format.headingLevel() > 0) {
        format.setTopMargin(isFirst ? 0 : 2 * paragraphGap);
        format.setBottomMargin(paragraphGap);
    } else if (isCode(block)) {
        setCode(format, block);
    } else if (isLeftBehindTable(block)) {
        format.setTopMargin(0);
        format.setBottomMargin(0);
        format.setLineHeight(1, QTextBlockFormat::FixedHeight);
    } else {
        format.setTopMargin(0);
        format.setBottomMargin(block.textList() == nullptr || endsList(block) ? paragraphGap : itemGap);
        format.setLineHeight(lineHeightPercent, QTextBlockFormat::ProportionalHeight);
    }
    QTextCursor(block).setBlockFormat(format);
}

void setLinks(const QTextBlock& block, const QColor& colour)
{
    for (auto part = block.begin(); !part.atEnd(); ++part) {
        const QTextFragment fragment = part.fragment();
        if (!fragment.charFormat().isAnchor()) {
            continue;
        }
        QTextCharFormat format;
        format.setForeground(colour);
        format.setFontUnderline(true);
        QTextCursor cursor(block);
        cursor.setPosition(fragment.position());
        cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(format);
    }
}

void setTable(QTextTable& table, const QPalette& palette)
{
    QTextTableFormat format = table.format();
    format.setBorder(1);
    format.setBorderBrush(palette.brush(QPalette::Mid));
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setCellPadding(cellPadding);
    format.setTopMargin(paragraphGap);
    format.setBottomMargin(paragraphGap);
    table.setFormat(format);
    for (int row = 0; row < table.rows(); ++row) {
        for (int column = 0; column < table.columns(); ++column) {
            QTextTableCell cell = table.cellAt(row, column);
            QTextBlockFormat block = cell.firstCursorPosition().blockFormat();
            block.setTopMargin(0);
            block.setBottomMargin(0);
            cell.firstCursorPosition().setBlockFormat(block);
            if (row == 0) {
                QTextCharFormat heading = cell.format();
                heading.setBackground(palette.brush(QPalette::Button));
                cell.setFormat(heading);
            }
        }
    }
}
} // namespace

void PageStyle::apply(QTextDocument& document, const QPalette& palette)
{
    document.setUndoRedoEnabled(false);
    document.setDocumentMargin(pageMargin);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        setBlock(block);
        setLinks(block, palette.color(QPalette::Link));
    }
    const QList<QTextFrame*> frames = document.rootFrame()->childFrames();
    for (QTextFrame* frame : frames) {
        if (auto* table = qobject_cast<QTextTable*>(frame)) {
            setTable(*table, palette);
        }
    }
}
