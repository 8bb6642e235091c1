#include "codec/Lv2Bundle.h"
#include "codec/FileBytes.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSet>

#include <serd/serd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace korvane {

namespace {

constexpr QByteArrayView kRdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr QByteArrayView kRdfs = "http://www.w3.org/2000/01/rdf-schema#";
constexpr QByteArrayView kLv2 = "http://lv2plug.in/ns/lv2core#";
constexpr QByteArrayView kDoap = "http://usefulinc.com/ns/doap#";
constexpr QByteArrayView kFoaf = "http://xmlns.com/foaf/0.1/";

// The predicates the fields need; every other statement is dropped as it is parsed.
enum Predicate {
    Type,
    SeeAlso,
    Binary,
    MinorVersion,
    MicroVersion,
    Project,
    Name,
    Maintainer,
    FoafName,
    Other
};

struct KnownPredicate {
    QByteArrayView space;
    QByteArrayView local;
    Predicate predicate;
};
constexpr KnownPredicate kPredicates[] = {
    {kRdf, "type", Type},
    {kRdfs, "seeAlso", SeeAlso},
    {kLv2, "binary", Binary},
    {kLv2, "minorVersion", MinorVersion},
    {kLv2, "microVersion", MicroVersion},
    {kLv2, "project", Project},
    {kDoap, "name", Name},
    {kDoap, "maintainer", Maintainer},
    {kFoaf, "name", FoafName},
};

Predicate classify(QByteArrayView space, QByteArrayView local)
{
    for (const KnownPredicate &known : kPredicates) {
        if (local == known.local && space == known.space)
            return known.predicate;
    }
    return Other;
}

struct Node {
    QString value; // an absolute URI, "_:id" for a blank node, or a literal's text
    QString lang;  // a literal's language tag
    bool literal = false;
};

struct Statement {
    QString subject;
    Predicate predicate;
    Node object;
};

QByteArrayView view(const SerdNode *node)
{
    return QByteArrayView(reinterpret_cast<const char *>(node->buf), qsizetype(node->n_bytes));
}

QByteArrayView view(const SerdChunk &chunk)
{
    return QByteArrayView(reinterpret_cast<const char *>(chunk.buf), qsizetype(chunk.len));
}

// One file being parsed: its own prefixes and base, the statements it adds, its errors.
struct FileParse {
    SerdEnv *env = nullptr;
    QList<Statement> *statements = nullptr;
    QString fileName; // relative to the bundle, for messages
    QStringList *problems = nullptr;
    int errors = 0;
    bool keepTypes = false; // only the manifest's rdf:type statements matter
    mutable bool reportedPrefix = false;

    Node expand(const SerdNode *node, const SerdNode *lang = nullptr) const
    {
        Node out;
        switch (node->type) {
        case SERD_URI:
            if (serd_uri_string_has_scheme(node->buf)) {
                out.value = QString::fromUtf8(view(node));
                break;
            }
            [[fallthrough]];
        case SERD_CURIE: {
            SerdNode full = serd_env_expand_node(env, node);
            if (!full.buf)
                undefinedPrefix(node);
            out.value = QString::fromUtf8(view(&full));
            serd_node_free(&full);
            break;
        }
        case SERD_BLANK:
            out.value = QStringLiteral("_:") + QString::fromUtf8(view(node));
            break;
        case SERD_LITERAL:
            out.literal = true;
            out.value = QString::fromUtf8(view(node));
            if (lang)
                out.lang = QString::fromUtf8(view(lang));
            break;
        default:
            break;
        }
        return out;
    }

    // serd passes prefixed names on as they are written; an undefined prefix shows only here.
    void undefinedPrefix(const SerdNode *node) const
    {
        if (reportedPrefix)
            return;
        reportedPrefix = true;
        problems->append(QStringLiteral("%1: not Turtle: undefined prefix in %2")
                             .arg(fileName, QString::fromUtf8(view(node))));
    }

    Predicate predicateOf(const SerdNode *node) const
    {
        if (node->type == SERD_CURIE) {
            SerdChunk prefix{}, suffix{};
            if (serd_env_expand(env, node, &prefix, &suffix) != SERD_SUCCESS) {
                undefinedPrefix(node);
                return Other;
            }
            return classify(view(prefix), view(suffix));
        }
        if (node->type != SERD_URI)
            return Other;
        if (serd_uri_string_has_scheme(node->buf))
            return split(view(node));
        SerdNode full = serd_env_expand_node(env, node); // relative: resolved against the base
        const Predicate predicate = split(view(&full));
        serd_node_free(&full);
        return predicate;
    }

    static Predicate split(QByteArrayView uri)
    {
        const qsizetype cut = std::max(uri.lastIndexOf('#'), uri.lastIndexOf('/')) + 1;
        return cut > 0 ? classify(uri.first(cut), uri.sliced(cut)) : Other;
    }
};

SerdStatus onBase(void *handle, const SerdNode *uri)
{
    return serd_env_set_base_uri(static_cast<FileParse *>(handle)->env, uri);
}

SerdStatus onPrefix(void *handle, const SerdNode *name, const SerdNode *uri)
{
    return serd_env_set_prefix(static_cast<FileParse *>(handle)->env, name, uri);
}

SerdStatus onStatement(void *handle, SerdStatementFlags, const SerdNode *, const SerdNode *subject,
                       const SerdNode *predicate, const SerdNode *object, const SerdNode *,
                       const SerdNode *lang)
{
    auto *file = static_cast<FileParse *>(handle);
    const Predicate which = file->predicateOf(predicate);
    if (which == Other || (which == Type && !file->keepTypes))
        return SERD_SUCCESS;
    Statement statement{file->expand(subject).value, which, file->expand(object, lang)};
    if (!statement.subject.isEmpty()
        && (statement.object.literal || !statement.object.value.isEmpty()))
        file->statements->append(std::move(statement));
    return SERD_SUCCESS;
}

SerdStatus onError(void *handle, const SerdError *error)
{
    auto *file = static_cast<FileParse *>(handle);
    // A file full of garbage gives an error per line; the first few say enough.
    if (++file->errors > 3)
        return SERD_SUCCESS;
    char text[512];
    va_list args;
    va_copy(args, *error->args);
    std::vsnprintf(text, sizeof text, error->fmt, args);
    va_end(args);
    file->problems->append(QStringLiteral("%1: not Turtle: line %2, column %3: %4")
                               .arg(file->fileName)
                               .arg(error->line)
                               .arg(error->col)
                               .arg(QString::fromUtf8(text).trimmed()));
    return SERD_SUCCESS;
}

struct MemorySource {
    QByteArrayView bytes;
    qsizetype offset = 0;
};

size_t readMemory(void *buffer, size_t size, size_t count, void *stream)
{
    auto *source = static_cast<MemorySource *>(stream);
    const size_t wanted = size * count;
    const size_t left = size_t(source->bytes.size() - source->offset);
    const size_t n = std::min(wanted, left);
    if (n > 0)
        std::memcpy(buffer, source->bytes.data() + source->offset, n);
    source->offset += qsizetype(n);
    return n;
}

int memoryError(void *)
{
    return 0;
}

// Whether bytes need no percent escape in a file URI's path: most plug-in paths, which then skip
// serd's encoder and decoder (a third of the parse of a small bundle).
bool isPlainPath(QByteArrayView bytes)
{
    for (const char c : bytes) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')
                           || (c >= '0' && c <= '9') || c == '/' || c == '-' || c == '.' || c == '_'
                           || c == '~';
        if (!plain)
            return false;
    }
    return true;
}

QByteArray fileUri(const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    if (native.startsWith('/') && isPlainPath(native))
        return QByteArrayLiteral("file://") + native;
    SerdNode node = serd_node_new_file_uri(reinterpret_cast<const uint8_t *>(native.constData()),
                                           nullptr, nullptr, true);
    QByteArray uri(reinterpret_cast<const char *>(node.buf), qsizetype(node.n_bytes));
    serd_node_free(&node);
    return uri;
}

// The path a file URI names, percent-decoded; empty for any other URI.
QString pathOfUri(const QString &uri)
{
    if (!uri.startsWith(QLatin1String("file:")))
        return {};
    const QByteArray utf8 = uri.toUtf8();
    if (utf8.startsWith("file:///") && isPlainPath(QByteArrayView(utf8).sliced(7)))
        return QDir::cleanPath(QString::fromLatin1(QByteArrayView(utf8).sliced(7)));
    uint8_t *path =
        serd_file_uri_parse(reinterpret_cast<const uint8_t *>(utf8.constData()), nullptr);
    if (!path)
        return {};
    QString result = QDir::cleanPath(QFile::decodeName(reinterpret_cast<char *>(path)));
    serd_free(path);
    return result;
}

// The statements of all files read, looked up by subject.
class Model {
public:
    QList<Statement> statements;

    void index()
    {
        m_bySubject.clear();
        for (qsizetype i = 0; i < statements.size(); ++i)
            m_bySubject.insert(statements[i].subject, i);
    }

    QList<const Node *> objects(const QString &subject, Predicate predicate) const
    {
        QList<const Node *> found;
        // QMultiHash gives the latest insert first; the files' order is kept instead.
        const auto range = m_bySubject.equal_range(subject);
        for (auto it = range.first; it != range.second; ++it) {
            const Statement &statement = statements[*it];
            if (statement.predicate == predicate)
                found.prepend(&statement.object);
        }
        return found;
    }

    // A literal, preferring one without a language tag, then English, then any.
    QString literal(const QString &subject, Predicate predicate) const
    {
        const Node *english = nullptr;
        const Node *any = nullptr;
        for (const Node *node : objects(subject, predicate)) {
            if (!node->literal)
                continue;
            if (node->lang.isEmpty())
                return node->value;
            if (!english && node->lang.startsWith(QLatin1String("en"), Qt::CaseInsensitive))
                english = node;
            if (!any)
                any = node;
        }
        return english ? english->value : any ? any->value : QString();
    }

    int integer(const QString &subject, Predicate predicate) const
    {
        for (const Node *node : objects(subject, predicate)) {
            bool ok = false;
            const int value = node->value.toInt(&ok);
            if (node->literal && ok && value >= 0)
                return value;
        }
        return -1;
    }

    QString first(const QString &subject, Predicate predicate) const
    {
        const QList<const Node *> found = objects(subject, predicate);
        return found.isEmpty() || found.first()->literal ? QString() : found.first()->value;
    }

private:
    QMultiHash<QString, qsizetype> m_bySubject;
};

// Parses one file's bytes into the model; the base is the file's own URI, as hosts read it.
void parseTurtle(const QByteArray &bytes, const QString &path, const QString &fileName, int index,
                 bool keepTypes, Model &model, QStringList &problems)
{
    const QByteArray base = fileUri(path);
    SerdNode baseNode =
        serd_node_from_string(SERD_URI, reinterpret_cast<const uint8_t *>(base.constData()));
    FileParse file;
    file.env = serd_env_new(&baseNode);
    file.statements = &model.statements;
    file.fileName = fileName;
    file.problems = &problems;
    file.keepTypes = keepTypes;
    SerdReader *reader =
        serd_reader_new(SERD_TURTLE, &file, nullptr, onBase, onPrefix, onStatement, nullptr);
    serd_reader_set_error_sink(reader, onError, &file);
    // Blank nodes of different files are different nodes.
    const QByteArray blankPrefix = "f" + QByteArray::number(index) + "_";
    serd_reader_add_blank_prefix(reader,
                                 reinterpret_cast<const uint8_t *>(blankPrefix.constData()));
    MemorySource source{bytes, 0};
    const SerdStatus status =
        serd_reader_read_source(reader, readMemory, memoryError, &source,
                                reinterpret_cast<const uint8_t *>(base.constData()), 4096);
    if (status > SERD_FAILURE && file.errors == 0)
        problems.append(QStringLiteral("%1: not Turtle: %2")
                            .arg(fileName, QString::fromUtf8(reinterpret_cast<const char *>(
                                               serd_strerror(status)))));
    if (file.errors > 3)
        problems.append(QStringLiteral("%1: %2 more errors").arg(fileName).arg(file.errors - 3));
    serd_reader_free(reader);
    serd_env_free(file.env);
}

} // namespace

QString Lv2Plugin::version() const
{
    if (minorVersion < 0)
        return {};
    return QStringLiteral("%1.%2").arg(minorVersion).arg(std::max(microVersion, 0));
}

Lv2Bundle::FileRead Lv2Bundle::readFile(const QString &path, qsizetype maxBytes)
{
    return fileRead(FileBytes::read(path, maxBytes));
}

Lv2Bundle::FileRead Lv2Bundle::fileRead(FileBytes file)
{
    if (file.errorNumber == ENOTDIR)
        file.error = QStringLiteral("cannot be read: the bundle is a file, not a folder");
    return FileRead{std::move(file.bytes), std::move(file.error)};
}

Lv2BundleInfo Lv2Bundle::read(const QString &bundlePath, const FileReader &reader,
                              const Limits &limits)
{
    Lv2BundleInfo info;
    info.path = QDir::cleanPath(bundlePath);
    const QString bundle = info.path;
    const QString manifestPath = bundle + QStringLiteral("/manifest.ttl");

    Model model;
    const FileRead manifest = reader(manifestPath, limits.maxFileBytes);
    if (!manifest.error.isEmpty()) {
        info.error = QStringLiteral("manifest.ttl %1").arg(manifest.error);
        info.problems.append(info.error);
        return info;
    }
    parseTurtle(manifest.bytes, manifestPath, QStringLiteral("manifest.ttl"), 0, true, model,
                info.problems);
    model.index();

    // The plug-ins the manifest declares, in its order.
    const QString pluginClass = QString::fromLatin1(kLv2.toByteArray()) + QStringLiteral("Plugin");
    QStringList uris;
    QSet<QString> seen;
    for (const Statement &statement : std::as_const(model.statements)) {
        if (statement.predicate == Type && !statement.object.literal
            && statement.object.value == pluginClass && !statement.subject.startsWith(u'_')
            && !seen.contains(statement.subject)) {
            seen.insert(statement.subject);
            uris.append(statement.subject);
        }
    }
    if (uris.isEmpty() && !info.problems.isEmpty())
        info.error = info.problems.first();

    // Their data files, each read once, refused when outside the bundle.
    QSet<QString> read{manifestPath};
    int fileIndex = 1;
    const QString prefix = bundle + u'/';
    QStringList targets; // copied out: reading a file adds to the model
    for (const QString &uri : std::as_const(uris)) {
        for (const Node *target : model.objects(uri, SeeAlso)) {
            if (!target->literal)
                targets.append(target->value);
        }
    }
    for (const QString &target : std::as_const(targets)) {
        const QString path = pathOfUri(target);
        if (path.isEmpty() || !path.startsWith(prefix)) {
            info.problems.append(
                QStringLiteral("%1: a file outside the bundle is not read").arg(target));
            continue;
        }
        if (read.contains(path))
            continue;
        read.insert(path);
        const QString name = path.mid(prefix.size());
        if (fileIndex > limits.maxFiles) {
            info.problems.append(
                QStringLiteral("%1: more than %2 data files").arg(name).arg(limits.maxFiles));
            continue;
        }
        const FileRead data = reader(path, limits.maxFileBytes);
        if (!data.error.isEmpty()) {
            info.problems.append(QStringLiteral("%1 %2").arg(name, data.error));
            continue;
        }
        parseTurtle(data.bytes, path, name, fileIndex++, false, model, info.problems);
    }
    model.index();

    for (const QString &uri : std::as_const(uris)) {
        Lv2Plugin plugin;
        plugin.uri = uri;
        plugin.name = model.literal(uri, Name);
        const QString binary = model.first(uri, Binary);
        const QString binaryPath = pathOfUri(binary);
        plugin.binary = binaryPath.startsWith(prefix) ? binaryPath.mid(prefix.size()) : binary;
        plugin.minorVersion = model.integer(uri, MinorVersion);
        plugin.microVersion = model.integer(uri, MicroVersion);
        QList<const Node *> maintainers = model.objects(uri, Maintainer);
        if (maintainers.isEmpty()) {
            const QString project = model.first(uri, Project);
            if (!project.isEmpty())
                maintainers = model.objects(project, Maintainer);
        }
        for (const Node *maintainer : maintainers) {
            if (maintainer->literal)
                continue;
            plugin.vendor = model.literal(maintainer->value, FoafName);
            if (!plugin.vendor.isEmpty())
                break;
        }
        info.plugins.append(plugin);
    }
    return info;
}

} // namespace korvane
