#include "app/commands/answer_json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

#include <algorithm>
#include <type_traits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// Fields may be added; what there is keeps its name, kind and meaning.
constexpr int schemaVersion = 1;

// The fields of each record, once for both directions. What added() names is not asked of others:
// earlier versions have not got it.

void describe(auto &field, DisplayInfo &display)
{
    field("id"_L1, display.id);
    field("name"_L1, display.name);
    field("builtIn"_L1, display.builtIn);
}

void describe(auto &field, DesktopInfo &desktop)
{
    field("number"_L1, desktop.number);
    field("name"_L1, desktop.name);
    field("display"_L1, desktop.display);
    field("shown"_L1, desktop.shown);
    field("flockWindows"_L1, desktop.flockWindows);
}

void describe(auto &field, AppInfo &app)
{
    field("id"_L1, app.id);
    field("name"_L1, app.name);
    field("running"_L1, app.running);
    field("inFlock"_L1, app.inFlock);
}

void describe(auto &field, WindowInfo &window)
{
    field("id"_L1, window.id);
    field("app"_L1, window.app);
    field("appName"_L1, window.appName);
    field("title"_L1, window.title);
    field("desktops"_L1, window.desktops);
    field("reason"_L1, window.reason);
}

void describe(auto &field, MovedWindowInfo &window)
{
    field("id"_L1, window.id);
    field("app"_L1, window.app);
    field("title"_L1, window.title);
    field("outcome"_L1, window.outcome);
    field("reason"_L1, window.reason);
}

void describeAccess(auto &field, bool &trusted, bool &available)
{
    field("trusted"_L1, trusted);
    field("available"_L1, available);
}

void describe(auto &field, Refusal &refusal)
{
    field("error"_L1, refusal.error);
    field.added("cause"_L1, refusal.cause);
    bool isThere = false;
    if (refusal.cause == RefusalCause::NoSession)
        describeAccess(field, isThere, isThere);
}

void describe(auto &field, StatusContent &status)
{
    describeAccess(field, status.trusted, status.available);
    field("follow"_L1, status.follow);
    field("displays"_L1, status.displays);
    field("desktops"_L1, status.desktops);
    field("flock"_L1, status.flock);
    field("flockDesktop"_L1, status.flockDesktop);
    field("windows"_L1, status.windows);
    field("limits"_L1, status.limits);
    field.added("session"_L1, status.session);
    field.added("choicesKnown"_L1, status.choicesKnown);
}

void describe(auto &field, AppsContent &content) { field("apps"_L1, content.apps); }

void describe(auto &field, FlockContent &content) { field("flock"_L1, content.flock); }

void describe(auto &field, RenameContent &content) { field("desktop"_L1, content.desktop); }

void describe(auto &field, MoveContent &move)
{
    field("desktop"_L1, move.desktop);
    field("summary"_L1, move.summary);
    field("issues"_L1, move.issues);
    field("complete"_L1, move.complete);
    field("untried"_L1, move.untried);
    field.added("windows"_L1, move.windows);
}

// What every answer has.
struct Frame
{
    int schema = schemaVersion;
    int status = 0;
    QStringList problems{};
};

void describe(auto &field, Frame &frame)
{
    field("schema"_L1, frame.schema);
    field("status"_L1, frame.status);
    field("problems"_L1, frame.problems);
}

template <typename Value>
struct Word
{
    Value value;
    QLatin1StringView word;
};

constexpr Word<RefusalCause> causes[] = {
    {RefusalCause::Other, "other"_L1},
    {RefusalCause::NoSession, "noSession"_L1},
    {RefusalCause::NotReady, "notReady"_L1},
    {RefusalCause::Busy, "busy"_L1},
    {RefusalCause::NotFound, "notFound"_L1},
    {RefusalCause::NameTooLong, "nameTooLong"_L1},
    {RefusalCause::NoAccess, "noAccess"_L1},
    {RefusalCause::DesktopGone, "desktopGone"_L1},
    {RefusalCause::NothingToMove, "nothingToMove"_L1},
    {RefusalCause::ChoicesUnreadable, "choicesUnreadable"_L1},
    {RefusalCause::NotMade, "notMade"_L1},
    {RefusalCause::NotStored, "notStored"_L1},
    {RefusalCause::NoAnswer, "noAnswer"_L1},
};

constexpr Word<MoveOutcome> outcomes[] = {
    {MoveOutcome::Untried, "untried"_L1}, {MoveOutcome::Moved, "moved"_L1},
    {MoveOutcome::Already, "already"_L1}, {MoveOutcome::Skipped, "skipped"_L1},
    {MoveOutcome::Failed, "failed"_L1},   {MoveOutcome::PutBack, "putBack"_L1},
};

constexpr const auto &wordsOf(RefusalCause) { return causes; }
constexpr const auto &wordsOf(MoveOutcome) { return outcomes; }

template <typename Value>
constexpr bool isOptional = false;
template <typename Value>
constexpr bool isOptional<std::optional<Value>> = true;
template <typename Value>
constexpr bool isList = false;
template <typename Value>
constexpr bool isList<QList<Value>> = true;

class Writer
{
public:
    template <typename Value>
    void operator()(QLatin1StringView key, Value &value)
    {
        m_object.insert(key, json(value));
    }
    template <typename Value>
    void added(QLatin1StringView key, Value &value)
    {
        (*this)(key, value);
    }

    const QJsonObject &object() const { return m_object; }

private:
    template <typename Value>
    static QJsonValue json(Value &value)
    {
        if constexpr (std::is_same_v<Value, bool> || std::is_same_v<Value, QString>) {
            return value;
        } else if constexpr (std::is_integral_v<Value>) {
            return static_cast<qint64>(value);
        } else if constexpr (std::is_enum_v<Value>) {
            const auto &words = wordsOf(value);
            return QString(std::find_if(std::begin(words), std::end(words), [&](const auto &entry) {
                               return entry.value == value;
                           })->word);
        } else if constexpr (isOptional<Value>) {
            return value ? json(*value) : QJsonValue(QJsonValue::Null);
        } else if constexpr (isList<Value>) {
            QJsonArray array;
            for (auto &item : value)
                array.append(json(item));
            return array;
        } else {
            Writer fields;
            describe(fields, value);
            return fields.object();
        }
    }

    QJsonObject m_object;
};

class Reader
{
public:
    explicit Reader(const QJsonObject &object)
        : m_object(object)
    { }

    template <typename Value>
    void operator()(QLatin1StringView key, Value &value)
    {
        m_isGood = m_isGood && read(m_object.value(key), value);
    }
    template <typename Value>
    void added(QLatin1StringView key, Value &value)
    {
        if (m_object.contains(key))
            (*this)(key, value);
    }

    // Whether every field was there and of its kind.
    bool isGood() const { return m_isGood; }

private:
    template <typename Value>
    static bool read(const QJsonValue &json, Value &value)
    {
        if constexpr (std::is_same_v<Value, bool>) {
            value = json.toBool();
            return json.isBool();
        } else if constexpr (std::is_same_v<Value, QString>) {
            value = json.toString();
            return json.isString();
        } else if constexpr (std::is_integral_v<Value>) {
            const qint64 number = json.toInteger(-1);
            value = static_cast<Value>(number);
            return number >= 0 && std::in_range<Value>(number);
        } else if constexpr (std::is_enum_v<Value>) {
            const auto &words = wordsOf(value);
            const QString text = json.toString();
            const auto found = std::find_if(std::begin(words), std::end(words),
                                            [&](const auto &entry) { return entry.word == text; });
            if (found == std::end(words))
                return false;
            value = found->value;
            return true;
        } else if constexpr (isOptional<Value>) {
            return json.isNull() || read(json, value.emplace());
        } else if constexpr (isList<Value>) {
            const QJsonArray array = json.toArray();
            return json.isArray()
                && std::all_of(array.begin(), array.end(), [&](const QJsonValue &item) {
                       return read(item, value.emplaceBack());
                   });
        } else {
            Reader fields(json.toObject());
            describe(fields, value);
            return json.isObject() && fields.isGood();
        }
    }

    QJsonObject m_object;
    bool m_isGood = true;
};

QByteArray json(Answer answer, QJsonDocument::JsonFormat format)
{
    Frame frame{.status = static_cast<int>(answer.status), .problems = answer.problems};
    Writer fields;
    describe(fields, frame);
    std::visit([&](auto &content) { describe(fields, content); }, answer.content);
    return QJsonDocument(fields.object()).toJson(format);
}

std::optional<AnswerStatus> statusOf(int number)
{
    for (const auto status :
         {AnswerStatus::Done, AnswerStatus::Incomplete, AnswerStatus::NothingTried}) {
        if (static_cast<int>(status) == number)
            return status;
    }
    return std::nullopt;
}

} // namespace

QString compactJson(const Answer &answer)
{
    return QString::fromUtf8(json(answer, QJsonDocument::Compact));
}

QString indentedJson(const Answer &answer)
{
    // JSON leaves the controls of ISO 6429 as they are; terminals may obey them.
    QString result;
    for (const QChar character : QString::fromUtf8(json(answer, QJsonDocument::Indented))) {
        const bool isControl = character >= QChar(0x7F) && character <= QChar(0x9F);
        result += isControl ? u"\\u%1"_s.arg(character.unicode(), 4, 16, QChar(u'0'))
                            : QString(character);
    }
    return result;
}

std::optional<Answer> answerFromJson(const Request &request, const QByteArray &json)
{
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const auto isRead = [&](auto &record) {
        Reader fields(object);
        describe(fields, record);
        return fields.isGood();
    };
    Frame frame;
    if (!isRead(frame) || frame.schema != schemaVersion)
        return std::nullopt;
    const auto status = statusOf(frame.status);
    if (!status)
        return std::nullopt;
    Answer answer{*status, frame.problems, {}};
    if (isRead(answer.content.emplace<Refusal>()))
        return status == AnswerStatus::Done ? std::nullopt : std::optional(answer);
    const bool isContent = std::visit(
        [&](const auto &asked) {
            using Content = typename std::decay_t<decltype(asked)>::Content;
            return isRead(answer.content.emplace<Content>());
        },
        request);
    return isContent ? std::optional(answer) : std::nullopt;
}

} // namespace tovel
