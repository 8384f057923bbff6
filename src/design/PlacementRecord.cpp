#include "design/PlacementRecord.h"

namespace korvel {

namespace {

std::optional<Orient> orientOf(const std::string& text) {
    for (int i = static_cast<int>(Orient::N); i <= static_cast<int>(Orient::FW); ++i) {
        if (OrientConverter::OrientToString(static_cast<Orient>(i)) == text) {
            return static_cast<Orient>(i);
        }
    }
    return std::nullopt;
}

// What may stand behind the position: nothing, an orientation, or dimensions and an orientation.
bool readTurn(RecordFile& file, PlacementRecord& record, const std::string& subject) {
    BookshelfScanner& scanner = file.scanner;
    const std::string piece(scanner.nextPiece());
    if (piece.empty()) {
        return true;
    }
    if (piece == "DIMS") {
        scanner.token();
        const Corner<double> dims = scanner.corner<double>("=");
        scanner.skipPast(':');
        record.dims = Extent{dims.x, dims.y};
    } else if (piece[0] == ':') {
        scanner.skipPast(':');
    } else {
        file.error(subject + ": found " + shown(piece) +
                   ", expected ': ORIENTATION', 'DIMS = (W, H) : ORIENTATION' or the end of the "
                   "line");
        return false;
    }
    const std::string text = scanner.token("an orientation");
    const std::optional<Orient> orient = orientOf(text);
    if (scanner && !orient) {
        file.error(subject + ": found " + shown(text) +
                   ", expected an orientation: N, E, S, W, FN, FE, FS or FW");
        return false;
    }
    record.orient = orient.value_or(Orient::N);
    return true;
}

}  // namespace

std::optional<PlacementRecord> readPlacementRecord(RecordFile& file, const std::string& subject) {
    PlacementRecord record;
    const Corner<double> at = file.scanner.position<double>();
    record.at = {at.x, at.y};
    if (file.scanner && !readTurn(file, record, subject)) {
        return std::nullopt;
    }
    if (file.reportSlip(subject)) {
        return std::nullopt;
    }
    file.passOverRest(subject);
    return record;
}

}  // namespace korvel
