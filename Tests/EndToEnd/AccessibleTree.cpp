#include "Tests/EndToEnd/AccessibleTree.h"

#include "Tests/Support/ChildProcess.h"

#include <stdexcept>
#include <utility>

// Last, since GLib's and Qt's macros have names in common.
#undef signals
#include <atspi/atspi.h>

namespace {

const char* const renaming = "object:property-change:accessible-name";
constexpr int patienceWithActions =
    1'000; // ms; one that asks the user something may be answered after the user has
constexpr int noGraceForNewPrograms = -1;

struct StringFreer {
    void operator()(gchar* text) const { g_free(text); }
};

/// Takes over a string of GLib.
QString taken(gchar* text) {
    const std::unique_ptr<gchar, StringFreer> owned(text);
    return QString::fromUtf8(owned.get());
}

/// Takes over an object of GLib.
template <typename Object>
std::shared_ptr<Object> shared(Object* object) {
    return object ? std::shared_ptr<Object>(object, g_object_unref) : nullptr;
}

void addShowing(std::vector<Accessible>& shown, const Accessible& accessible) {
    if (!accessible.is("showing")) {
        return;
    }
    shown.push_back(accessible);
    for (const Accessible& child : accessible.children()) {
        addShowing(shown, child);
    }
}

void noteRenamed(AtspiEvent* event, void* renamed) {
    const auto source = shared(static_cast<AtspiAccessible*>(g_object_ref(event->source)));
    static_cast<QStringList*>(renamed)->append(Accessible(source).inWords());
    g_boxed_free(ATSPI_TYPE_EVENT, event);
}

} // namespace

Accessible::Accessible(std::shared_ptr<AtspiAccessible> accessible) : m_accessible(std::move(accessible)) {}

QString Accessible::role() const {
    return taken(atspi_accessible_get_role_name(m_accessible.get(), nullptr));
}

QString Accessible::name() const {
    return taken(atspi_accessible_get_name(m_accessible.get(), nullptr));
}

QString Accessible::description() const {
    return taken(atspi_accessible_get_description(m_accessible.get(), nullptr));
}

QString Accessible::text() const {
    constexpr int end = -1;
    const auto text = shared(atspi_accessible_get_text_iface(m_accessible.get()));
    return text ? taken(atspi_text_get_text(text.get(), 0, end, nullptr)) : QString();
}

QStringList Accessible::states() const {
    QStringList names;
    const auto set = shared(atspi_accessible_get_state_set(m_accessible.get()));
    const std::shared_ptr<GArray> states(atspi_state_set_get_states(set.get()), g_array_unref);
    const std::shared_ptr<void> type(g_type_class_ref(ATSPI_TYPE_STATE_TYPE), g_type_class_unref);
    for (guint index = 0; index < states->len; ++index) {
        const auto state = g_array_index(states.get(), AtspiStateType, index);
        const GEnumValue* value = g_enum_get_value(static_cast<GEnumClass*>(type.get()), state);
        names.append(value ? QString::fromUtf8(value->value_nick) : QString::number(state));
    }
    return names;
}

QStringList Accessible::actions() const {
    QStringList names;
    const auto action = shared(atspi_accessible_get_action_iface(m_accessible.get()));
    const int count = action ? atspi_action_get_n_actions(action.get(), nullptr) : 0;
    for (int index = 0; index < count; ++index) {
        names.append(taken(atspi_action_get_action_name(action.get(), index, nullptr)));
    }
    return names;
}

qint64 Accessible::processId() const {
    return atspi_accessible_get_process_id(m_accessible.get(), nullptr);
}

std::vector<Accessible> Accessible::children() const {
    std::vector<Accessible> children;
    const int count = atspi_accessible_get_child_count(m_accessible.get(), nullptr);
    for (int index = 0; index < count; ++index) {
        if (const auto child =
                shared(atspi_accessible_get_child_at_index(m_accessible.get(), index, nullptr))) {
            children.emplace_back(child);
        }
    }
    return children;
}

bool Accessible::act(const QString& action) const {
    const auto index = actions().indexOf(action);
    const auto iface = shared(atspi_accessible_get_action_iface(m_accessible.get()));
    if (index < 0 || !iface) {
        return false;
    }
    GError* noAnswer = nullptr;
    atspi_set_timeout(patienceWithActions, noGraceForNewPrograms);
    const bool isDone = atspi_action_do_action(iface.get(), static_cast<gint>(index), &noAnswer);
    atspi_set_timeout(patience, noGraceForNewPrograms);
    const bool isUnderWay = noAnswer;
    g_clear_error(&noAnswer);
    return isDone || isUnderWay;
}

bool Accessible::enter(const QString& text) const {
    const auto iface = shared(atspi_accessible_get_editable_text_iface(m_accessible.get()));
    return iface && atspi_editable_text_set_text_contents(iface.get(), text.toUtf8().constData(), nullptr);
}

QString Accessible::inWords() const {
    return role() + ": " + name();
}

void AccessibleTree::Unreferencer::operator()(AtspiEventListener* listener) const {
    atspi_event_listener_deregister(listener, renaming, nullptr);
    g_object_unref(listener);
}

AccessibleTree::AccessibleTree() {
    if (atspi_init() > 1) {
        throw std::runtime_error("there is no bus of assistive technology");
    }
    atspi_set_timeout(patience, noGraceForNewPrograms);
    // What is remembered of a program may lag behind what it says now.
    atspi_accessible_set_cache_mask(shared(atspi_get_desktop(0)).get(), ATSPI_CACHE_NONE);
    m_listener.reset(atspi_event_listener_new(noteRenamed, &m_renamed, nullptr));
    if (!atspi_event_listener_register(m_listener.get(), renaming, nullptr)) {
        throw std::runtime_error("the registry of assistive technology does not answer");
    }
}

AccessibleTree::~AccessibleTree() {
    m_listener.reset();
    atspi_exit();
}

std::vector<Accessible> AccessibleTree::showing(qint64 processId) const {
    std::vector<Accessible> shown;
    for (const Accessible& program : Accessible(shared(atspi_get_desktop(0))).children()) {
        if (program.processId() == processId) {
            for (const Accessible& window : program.children()) {
                addShowing(shown, window);
            }
        }
    }
    return shown;
}

QStringList AccessibleTree::renamed() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    return m_renamed;
}

void AccessibleTree::forget() {
    renamed(); // those that wait
    m_renamed.clear();
}
