// SPDX-License-Identifier: MIT
// The pieces of a picture that `morsehost inspect` drew, in its order.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QXmlStreamReader>

#include <vector>

namespace testsupport {

struct DrawnPiece
{
    QString element;
    QStringList kinds; ///< words of its class
    QMap<QString, QString> attributes;
    QString text;  ///< its own
    QString title; ///< of a title within it
    int row = -1;  ///< that it belongs to; -1 outside of all

    double number(const char* name) const
    {
        return attributes.value(QLatin1String(name)).toDouble();
    }
};

struct Drawn
{
    std::vector<DrawnPiece> pieces;
    int rows = 0;
    QString error; ///< why it is no well-formed XML; empty when it is

    /// Those of a kind, legend left out.
    std::vector<DrawnPiece> inRows(const char* kind) const
    {
        std::vector<DrawnPiece> result;
        for (const DrawnPiece& piece : pieces) {
            if (piece.row >= 0 && piece.kinds.contains(QLatin1String(kind)))
                result.push_back(piece);
        }
        return result;
    }
    QString allText() const
    {
        QStringList texts;
        for (const DrawnPiece& piece : pieces)
            texts += piece.text;
        return texts.join(QLatin1Char('\n'));
    }
};

inline Drawn readDrawn(const QByteArray& svg)
{
    Drawn drawn;
    std::vector<DrawnPiece> open;
    QXmlStreamReader xml(svg);
    bool inRow = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            DrawnPiece piece;
            piece.element = xml.name().toString();
            for (const QXmlStreamAttribute& attribute : xml.attributes())
                piece.attributes.insert(attribute.name().toString(), attribute.value().toString());
            piece.kinds = piece.attributes.value(QStringLiteral("class")).split(QLatin1Char(' '));
            if (piece.element == QLatin1String("g")) {
                inRow = piece.kinds.contains(QStringLiteral("row"));
                drawn.rows += inRow ? 1 : 0;
            }
            piece.row = inRow ? drawn.rows - 1 : -1;
            open.push_back(piece);
        } else if (xml.isCharacters() && !open.empty()) {
            open.back().text += xml.text();
        } else if (xml.isEndElement()) {
            const DrawnPiece piece = open.back();
            open.pop_back();
            if (piece.element == QLatin1String("title") && !open.empty())
                open.back().title = piece.text;
            else
                drawn.pieces.push_back(piece);
            if (piece.element == QLatin1String("g"))
                inRow = false;
        }
    }
    if (xml.hasError())
        drawn.error = xml.errorString();
    return drawn;
}

} // namespace testsupport
