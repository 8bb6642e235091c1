// The JSON5 reader, and the VST 3 module description read through it. Strict JSON that Qt reads
// on one line is JSON5 too, so the reader must take it; an error always has a place.

#include "FuzzCheck.h"

#include "codec/Json5.h"
#include "codec/Vst3ModuleInfo.h"

#include <QJsonDocument>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using korvane::Json5;
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    Json5::Error error;
    const QJsonValue value = Json5::parse(bytes, &error);
    FUZZ_CHECK(error.isError() == value.isUndefined());
    if (error.isError())
        FUZZ_CHECK(error.line >= 1 && error.column >= 1);

    QJsonParseError qtError{};
    const QJsonDocument strict = QJsonDocument::fromJson(bytes, &qtError);
    // Qt also takes a raw line break inside a string, which JSON and JSON5 both refuse.
    if (qtError.error == QJsonParseError::NoError && QUtf8StringView(bytes).isValidUtf8()
        && !bytes.contains('\n') && !bytes.contains('\r'))
        FUZZ_CHECK(!error.isError());

    QString moduleError;
    const auto info = korvane::Vst3ModuleInfo::parse(bytes, &moduleError);
    FUZZ_CHECK(info.has_value() == moduleError.isEmpty());
    return 0;
}
