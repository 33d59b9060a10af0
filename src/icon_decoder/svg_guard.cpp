#include "icon_decoder/svg_guard.h"

#include <QXmlStreamReader>

namespace tessaril {

bool isSelfContainedSVG(const QByteArray& bytes) {
    QXmlStreamReader xml(bytes);
    bool isSVG = false;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::DTD:
            if (xml.text().contains(u'[') || !xml.entityDeclarations().isEmpty()) return false;
            break;
        case QXmlStreamReader::EntityReference:
        case QXmlStreamReader::ProcessingInstruction:
            return false;
        case QXmlStreamReader::StartElement:
            if (!isSVG && xml.name() != u"svg") return false;
            if (xml.name() == u"image") return false;
            isSVG = true;
            break;
        default:
            break;
        }
    }
    return isSVG && !xml.hasError();
}

} // namespace tessaril
