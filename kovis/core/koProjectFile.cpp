#include "koProjectFile.h"

#include "koRegularFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

const QString formatName = QStringLiteral("kovis-project");
constexpr int formatVersion = 1;

QString tr(const char* text)
{
    return QCoreApplication::translate("koProjectFile", text);
}

struct ParseContext
{
    QString folder;
    // Absolute, clean and not the file system's root.
    bool folderIsClean = false;
    QString error;
    QStringList trail;

    bool fail(const QString& message)
    {
        if (error.isEmpty()) {
            error = trail.isEmpty() ? message
                                    : tr("node \"%1\": %2").arg(trail.join(QLatin1Char('/')).left(200), message);
        }
        return false;
    }
};

// A relative path of plain names ("parts/a.kpr"): joined to a clean folder it stays clean.
bool isPlainRelative(const QString& path)
{
    for (int start = 0;;) {
        const int slash = path.indexOf(QLatin1Char('/'), start);
        const int end = slash < 0 ? path.size() : slash;
        const QStringRef name = path.midRef(start, end - start);
        if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")
            || name.contains(QLatin1Char('\\')))
            return false;
        if (slash < 0)
            return true;
        start = slash + 1;
    }
}

QString absolutePath(const QString& stored, const ParseContext& context)
{
    if (stored.isEmpty())
        return stored;
    // A project links to 200,000 files; most lie below its folder under plain names.
    if (context.folderIsClean && isPlainRelative(stored)) {
        // Made to measure: the scene keeps every link for the session.
        QString path;
        path.reserve(context.folder.size() + 1 + stored.size());
        return path.append(context.folder).append(QLatin1Char('/')).append(stored);
    }
    return QDir::cleanPath(QDir(context.folder).absoluteFilePath(QDir::fromNativeSeparators(stored)));
}

bool isInside(const QString& path, const QString& folder)
{
    if (folder.isEmpty())
        return false;
    const QString base = QDir::cleanPath(folder);
    const QString cleanPath = QDir::cleanPath(path);
    return cleanPath == base || cleanPath.startsWith(base.endsWith(QLatin1Char('/')) ? base : base + QLatin1Char('/'));
}

// Where the file being written lies and the folder of the open project, which is moved
// or copied as a whole.
class WriteContext
{
public:
    WriteContext(const QString& folder, const QString& projectFolder)
        : m_folder(folder), m_projectFolder(projectFolder), m_below(prefixOf(folder))
    {
    }

    QString storedPath(const QString& path) const
    {
        // Most links lie below the file's folder, and read paths are clean.
        if (!m_below.isEmpty() && path.size() > m_below.size() && path.startsWith(m_below)
            && QDir::cleanPath(path) == path) {
            return path.mid(m_below.size());
        }
        const bool relative = isInside(path, m_folder)
            || (isInside(m_folder, m_projectFolder) && isInside(path, m_projectFolder));
        return relative ? QDir(m_folder).relativeFilePath(path) : path;
    }

private:
    // QDir::relativeFilePath leaves a path as it is when the folder is relative.
    static QString prefixOf(const QString& folder)
    {
        if (!QDir::isAbsolutePath(folder))
            return QString();
        const QString base = QDir::cleanPath(folder);
        return base.endsWith(QLatin1Char('/')) ? base : base + QLatin1Char('/');
    }

    QString m_folder;
    QString m_projectFolder;
    QString m_below;
};

// JSON writes -0.0 as 0, which reads back as +0.0; a negative number too small for a
// float reads back as -0.0f and so keeps the sign.
constexpr double negativeZero = -1e-46;

double storedNumber(float value)
{
    return value == 0.0f && std::signbit(value) ? negativeZero : double(value);
}

bool fitsFloat(double value)
{
    return std::isfinite(value) && std::abs(value) <= double(std::numeric_limits<float>::max());
}

bool isExactIdentity(const QMatrix4x4& transform)
{
    return std::memcmp(transform.constData(), QMatrix4x4().constData(), 16 * sizeof(float)) == 0;
}

// Dates with an offset (UTC among them) are written as read; local dates as UTC, so
// that a file means the same on every machine.
QString dateText(const QDateTime& date)
{
    if (date.timeSpec() == Qt::OffsetFromUTC)
        return date.toString(Qt::ISODateWithMs);
    // What QDateTime::toString writes for UTC, at a fraction of its cost.
    const QDateTime utc = date.toUTC();
    const QDate day = utc.date();
    const QTime time = utc.time();
    if (day.year() < 0 || day.year() > 9999)
        return QString();
    QString text = QStringLiteral("0000-00-00T00:00:00.000Z");
    const int fields[][3] = {{day.year(), 0, 4},     {day.month(), 5, 2},   {day.day(), 8, 2}, {time.hour(), 11, 2},
                             {time.minute(), 14, 2}, {time.second(), 17, 2}, {time.msec(), 20, 3}};
    for (const auto& [value, at, width] : fields) {
        for (int i = at + width - 1, rest = value; i >= at; --i, rest /= 10)
            text[i] = QLatin1Char(char('0' + rest % 10));
    }
    return text;
}

bool readString(const QJsonObject& object, const char* key, QString& value, ParseContext& context, bool required)
{
    const QJsonValue entry = object.value(QLatin1String(key));
    if (entry.isUndefined())
        return !required || context.fail(tr("\"%1\" is missing").arg(QLatin1String(key)));
    if (!entry.isString())
        return context.fail(tr("\"%1\" must be a text").arg(QLatin1String(key)));
    value = entry.toString();
    if (value.size() > koProjectFile::maxTextLength)
        return context.fail(tr("\"%1\" is longer than %2 characters").arg(QLatin1String(key)).arg(koProjectFile::maxTextLength));
    return true;
}

bool readBool(const QJsonObject& object, const char* key, bool& value, ParseContext& context)
{
    const QJsonValue entry = object.value(QLatin1String(key));
    if (entry.isUndefined())
        return true;
    if (!entry.isBool())
        return context.fail(tr("\"%1\" must be true or false").arg(QLatin1String(key)));
    value = entry.toBool();
    return true;
}

bool readCount(const QJsonObject& object, const char* key, quint32& value, ParseContext& context)
{
    const QJsonValue entry = object.value(QLatin1String(key));
    if (entry.isUndefined())
        return true;
    const double number = entry.toDouble(-1);
    if (!entry.isDouble() || number < 0 || number > 4294967295.0 || number != qint64(number))
        return context.fail(tr("\"%1\" must be a whole number of at least 0").arg(QLatin1String(key)));
    value = quint32(number);
    return true;
}

bool readTransform(const QJsonObject& object, QMatrix4x4& transform, ParseContext& context)
{
    const QJsonValue entry = object.value(QLatin1String("transform"));
    if (entry.isUndefined())
        return true;
    const QJsonArray values = entry.toArray();
    if (!entry.isArray() || values.size() != 16)
        return context.fail(tr("\"transform\" must be a list of 16 numbers"));
    float numbers[16];
    for (int i = 0; i < 16; ++i) {
        if (!values.at(i).isDouble())
            return context.fail(tr("\"transform\" must be a list of 16 numbers"));
        const double number = values.at(i).toDouble();
        if (!fitsFloat(number))
            return context.fail(tr("\"transform\" holds %1, which is out of range").arg(number));
        numbers[i] = float(number);
    }
    transform = QMatrix4x4(numbers);
    return true;
}

bool readDate(const QJsonObject& object, const char* key, QDateTime& date, ParseContext& context)
{
    QString text;
    if (!readString(object, key, text, context, false))
        return false;
    if (text.isEmpty())
        return true;
    date = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!date.isValid())
        return context.fail(tr("\"%1\" must be a date such as 2024-05-01T12:00:00Z").arg(QLatin1String(key)));
    const QString written = dateText(date);
    if (written.isEmpty() || QDateTime::fromString(written, Qt::ISODateWithMs) != date)
        return context.fail(tr("\"%1\" holds a date that cannot be written back").arg(QLatin1String(key)));
    return true;
}

// Little-endian 32-bit values, whatever the machine.
template<typename T>
QByteArray packed(const T* values, int count)
{
    QByteArray bytes(count * 4, Qt::Uninitialized);
    for (int i = 0; i < count; ++i)
        qToLittleEndian(values[i], bytes.data() + 4 * i);
    return bytes;
}

template<typename T>
QVector<T> unpacked(const QByteArray& bytes)
{
    QVector<T> values(bytes.size() / 4);
    for (int i = 0; i < values.size(); ++i)
        values[i] = qFromLittleEndian<T>(bytes.constData() + 4 * i);
    return values;
}

bool readBase64(const QJsonObject& object, const char* key, int itemSize, QByteArray& bytes, ParseContext& context)
{
    const QJsonValue entry = object.value(QLatin1String(key));
    const auto decoded = QByteArray::fromBase64Encoding(entry.toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!entry.isString() || !decoded || decoded.decoded.size() % itemSize != 0)
        return context.fail(tr("\"mesh\" needs \"%1\" in base 64, %2 bytes an item").arg(QLatin1String(key)).arg(itemSize));
    bytes = decoded.decoded;
    return true;
}

bool readMesh(const QJsonObject& object, koSceneNodeDesc& node, ParseContext& context)
{
    const QJsonValue entry = object.value(QLatin1String("mesh"));
    if (entry.isUndefined())
        return true;
    QByteArray positions;
    QByteArray triangles;
    if (node.type != koNodeType::Geometry || !entry.isObject())
        return context.fail(tr("\"mesh\" must be an object of a geometry node"));
    if (!readBase64(entry.toObject(), "positions", 12, positions, context)
        || !readBase64(entry.toObject(), "triangles", 12, triangles, context)) {
        return false;
    }
    auto mesh = std::make_shared<koMesh>();
    const QVector<float> coordinates = unpacked<float>(positions);
    mesh->positions.resize(coordinates.size() / 3);
    std::memcpy(static_cast<void*>(mesh->positions.data()), coordinates.constData(), size_t(positions.size()));
    mesh->triangles = unpacked<quint32>(triangles);
    const quint32 vertexCount = quint32(mesh->positions.size());
    if (std::any_of(mesh->triangles.cbegin(), mesh->triangles.cend(), [&](quint32 index) { return index >= vertexCount; }))
        return context.fail(tr("\"mesh\" has a triangle corner past its %1 positions").arg(vertexCount));
    node.mesh = std::move(mesh);
    return true;
}

bool readNode(const QJsonValue& value, koSceneNodeDesc& node, int depth, ParseContext& context);

bool readChildren(const QJsonObject& object, koSceneNodeDesc& node, int depth, ParseContext& context)
{
    const QJsonValue entry = object.value(QLatin1String("children"));
    if (entry.isUndefined())
        return true;
    if (!entry.isArray())
        return context.fail(tr("\"children\" must be a list of nodes"));
    const QJsonArray children = entry.toArray();
    node.children.resize(children.size());
    for (int i = 0; i < children.size(); ++i) {
        if (!readNode(children.at(i), node.children[i], depth + 1, context))
            return false;
    }
    return true;
}

bool readReference(const QJsonObject& object, koSceneNodeDesc& node, ParseContext& context)
{
    koReferenceContent& reference = node.reference;
    const bool hasSmart = object.contains(QLatin1String("smart"));
    const bool hasSource = object.contains(QLatin1String("source"));
    if (!readString(object, "smart", reference.smartPath, context, false)
        || !readString(object, "source", reference.sourcePath, context, false)
        || !readDate(object, "sourceImported", reference.sourceImportDate, context)
        || !readBool(object, "loaded", reference.loaded, context)) {
        return false;
    }
    reference.hasSmart = hasSmart;
    reference.hasSource = hasSource;
    reference.smartPath = absolutePath(reference.smartPath, context);
    reference.sourcePath = absolutePath(reference.sourcePath, context);
    reference.smartUnsaved = hasSmart && reference.smartPath.isEmpty();
    node.inlineContent = object.contains(QLatin1String("children"));
    return true;
}

koNodeType typeFromName(const QString& name, bool* known)
{
    *known = true;
    if (name == QLatin1String("group"))
        return koNodeType::Group;
    if (name == QLatin1String("geometry"))
        return koNodeType::Geometry;
    if (name == QLatin1String("reference"))
        return koNodeType::Reference;
    *known = false;
    return koNodeType::Group;
}

bool readNode(const QJsonValue& value, koSceneNodeDesc& node, int depth, ParseContext& context)
{
    if (depth > koProjectFile::maxDepth)
        return context.fail(tr("nodes are nested more than %1 levels deep").arg(koProjectFile::maxDepth));
    if (!value.isObject())
        return context.fail(tr("a node must be an object"));
    const QJsonObject object = value.toObject();
    QString typeName;
    if (!readString(object, "name", node.name, context, true))
        return false;
    context.trail.append(node.name);
    bool known = false;
    if (!readString(object, "type", typeName, context, true))
        return false;
    node.type = typeFromName(typeName, &known);
    if (!known)
        return context.fail(tr("unknown node type \"%1\"").arg(typeName.left(40)));
    if (!readBool(object, "visible", node.visible, context) || !readBool(object, "locked", node.locked, context)
        || !readTransform(object, node.transform, context)
        || !readString(object, "instance", node.instance, context, false)
        || !readCount(object, "vertices", node.vertices, context) || !readCount(object, "faces", node.faces, context)
        || !readMesh(object, node, context)) {
        return false;
    }
    if (node.type == koNodeType::Reference && !readReference(object, node, context))
        return false;
    if (!readChildren(object, node, depth, context))
        return false;
    context.trail.removeLast();
    return true;
}

const char16_t* typeName(koNodeType type)
{
    switch (type) {
    case koNodeType::Geometry:
        return u"geometry";
    case koNodeType::Reference:
        return u"reference";
    case koNodeType::Group:
        break;
    }
    return u"group";
}

// Writes the JSON text as it goes: building a QJsonObject tree first cost most of a save.
class ProjectWriter
{
public:
    explicit ProjectWriter(const WriteContext& context) : m_context(context), m_json(m_buffer) {}

    QByteArray document(const koSceneNodeDesc& root)
    {
        m_json.StartObject();
        writeText(u"format", formatName);
        m_json.Key(u"root");
        writeNode(root);
        m_json.Key(u"version");
        m_json.Int(formatVersion);
        m_json.EndObject();
        m_buffer.Put('\n');
        return QByteArray(m_buffer.GetString(), int(m_buffer.GetSize()));
    }

private:
    using Utf16 = rapidjson::UTF16<char16_t>;

    static const char16_t* characters(const QString& text) { return reinterpret_cast<const char16_t*>(text.utf16()); }

    // RapidJSON refuses unpaired surrogates; such a text is written with every character
    // past ASCII as a \u escape, which reads back the same.
    static QString asciiQuoted(const QString& text)
    {
        rapidjson::GenericStringBuffer<Utf16> buffer;
        rapidjson::Writer<decltype(buffer), Utf16, Utf16> writer(buffer);
        writer.String(characters(text), rapidjson::SizeType(text.size()));
        QString ascii;
        for (const QChar c : QStringView(buffer.GetString())) {
            ascii += c.unicode() < 0x80 ? QString(c) : QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        }
        return ascii;
    }

    void writeText(const char16_t* key, const QString& text)
    {
        m_json.Key(key);
        if (text.isValidUtf16()) {
            m_json.String(characters(text), rapidjson::SizeType(text.size()));
        } else {
            const QString quoted = asciiQuoted(text);
            m_json.RawValue(characters(quoted), size_t(quoted.size()), rapidjson::kStringType);
        }
    }

    // Whole numbers as integers and anything not finite as null, as files have always had them.
    void writeNumber(double value)
    {
        if (!std::isfinite(value))
            m_json.Null();
        else if (std::trunc(value) == value && std::abs(value) <= 9007199254740992.0)
            m_json.Int64(qint64(value));
        else
            m_json.Double(value);
    }

    void writeTransform(const QMatrix4x4& transform)
    {
        m_json.Key(u"transform");
        m_json.StartArray();
        const float* data = transform.constData();
        // QMatrix4x4 keeps its numbers column by column; files list them row by row.
        for (int row = 0; row < 4; ++row) {
            for (int column = 0; column < 4; ++column)
                writeNumber(storedNumber(data[column * 4 + row]));
        }
        m_json.EndArray();
    }

    void writeMesh(const koMesh& mesh)
    {
        static_assert(sizeof(QVector3D) == 3 * sizeof(float), "QVector3D holds three floats");
        const auto* coordinates = reinterpret_cast<const float*>(mesh.positions.constData());
        m_json.Key(u"mesh");
        m_json.StartObject();
        writeText(u"positions", QString::fromLatin1(packed(coordinates, 3 * mesh.positions.size()).toBase64()));
        writeText(u"triangles", QString::fromLatin1(packed(mesh.triangles.constData(), mesh.triangles.size()).toBase64()));
        m_json.EndObject();
    }

    void writeChildren(const koSceneNodeDesc& node)
    {
        m_json.Key(u"children");
        m_json.StartArray();
        for (const koSceneNodeDesc& child : node.children)
            writeNode(child);
        m_json.EndArray();
    }

    void writeFlag(const char16_t* key, bool value)
    {
        m_json.Key(key);
        m_json.Bool(value);
    }

    void writeCount(const char16_t* key, quint32 value)
    {
        m_json.Key(key);
        m_json.Uint(value);
    }

    // Keys in the alphabetical order files have always had, so that a project kept under
    // version control does not change wholesale.
    void writeNode(const koSceneNodeDesc& node)
    {
        const bool geometry = node.type == koNodeType::Geometry;
        const bool reference = node.type == koNodeType::Reference;
        const koReferenceContent& links = node.reference;
        m_json.StartObject();
        if (reference ? node.inlineContent : !node.children.empty())
            writeChildren(node);
        if (geometry)
            writeCount(u"faces", node.faces);
        if (!node.instance.isEmpty())
            writeText(u"instance", node.instance);
        if (reference && !links.loaded)
            writeFlag(u"loaded", false);
        if (node.locked)
            writeFlag(u"locked", true);
        if (geometry && node.mesh)
            writeMesh(*node.mesh);
        writeText(u"name", node.name);
        if (reference && links.hasSmart)
            writeText(u"smart", m_context.storedPath(links.smartPath));
        if (reference && links.hasSource)
            writeText(u"source", m_context.storedPath(links.sourcePath));
        if (reference && links.sourceImportDate.isValid())
            writeText(u"sourceImported", dateText(links.sourceImportDate));
        if (!isExactIdentity(node.transform))
            writeTransform(node.transform);
        m_json.Key(u"type");
        m_json.String(typeName(node.type));
        if (geometry)
            writeCount(u"vertices", node.vertices);
        if (!node.visible)
            writeFlag(u"visible", false);
        m_json.EndObject();
    }

    const WriteContext m_context;
    rapidjson::StringBuffer m_buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer, Utf16, rapidjson::UTF8<>> m_json;
};

} // namespace

bool koProjectFile::read(const QString& path, koSceneNodeDesc& root, QString* error)
{
    QByteArray data;
    if (!koRegularFile::read(path, maxFileSize, data, error))
        return false;
    QString message;
    if (parse(data, QFileInfo(path).absolutePath(), root, &message))
        return true;
    if (error)
        *error = tr("%1 is not a valid project file: %2").arg(QDir::toNativeSeparators(path), message);
    return false;
}

bool koProjectFile::parse(const QByteArray& data, const QString& folder, koSceneNodeDesc& root, QString* error)
{
    ParseContext context;
    context.folder = folder;
    context.folderIsClean = QDir::isAbsolutePath(folder) && QDir::cleanPath(folder) == folder && folder != QLatin1String("/");
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(data, &parseError);
    koSceneNodeDesc result;
    if (document.isNull()) {
        context.fail(tr("%1 at offset %2").arg(parseError.errorString()).arg(parseError.offset));
    } else if (!document.isObject() || document.object().value(QLatin1String("format")).toString() != formatName) {
        context.fail(tr("the file is not a Kovis project"));
    } else if (document.object().value(QLatin1String("version")).toInt(0) < 1) {
        context.fail(tr("the file has no valid format version"));
    } else if (document.object().value(QLatin1String("version")).toInt() > formatVersion) {
        context.fail(tr("the file was written by a newer version of Kovis"));
    } else if (readNode(document.object().value(QLatin1String("root")), result, 0, context)
               && result.type != koNodeType::Group) {
        context.fail(tr("the root node must be a group"));
    }
    if (!context.error.isEmpty()) {
        if (error)
            *error = context.error;
        return false;
    }
    root = std::move(result);
    return true;
}

QByteArray koProjectFile::serialize(const koSceneNodeDesc& root, const QString& folder, const QString& projectFolder)
{
    return ProjectWriter(WriteContext(folder, projectFolder)).document(root);
}
