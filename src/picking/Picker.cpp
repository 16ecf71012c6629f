// Requests, the frames that answer them, and the pointer that is followed.
#include <zx3DQt/Picker.h>

#include <zx3DQt/BGFXNativeWidget.h>
#include <zx3DQt/FrameNotifier.h>

#include "../frame/Logging.h"
#include "IdPass.h"
#include "PickCollection.h"
#include "PickTarget.h"

#include <zx3D/Context.h>
#include <zx3D/ContextListener.h>
#include <zx3D/Message.h>

#include <QEvent>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <tuple>
#include <utility>

namespace zarvex::zx3DQt {

namespace {

/// The view that shows only some pixels of another one, which has them in a target of their own.
BGFXViewContext CutOut(bgfx::ViewId id, BGFXViewContext const& view, QRect const& pixels) {
    QRect const& viewport = view.GetViewport();
    double const scaleX = double(viewport.width()) / pixels.width();
    double const scaleY = double(viewport.height()) / pixels.height();
    double const x = (2.0 * (pixels.x() - viewport.x()) + pixels.width()) / viewport.width() - 1.0;
    double const y = 1.0 - (2.0 * (pixels.y() - viewport.y()) + pixels.height()) / viewport.height();
    QMatrix4x4 const& projection = view.GetProjectionMatrix();
    QMatrix4x4 cut = projection;
    for (int column = 0; column < 4; ++column) {
        double const w = projection(3, column);
        cut(0, column) = static_cast<float>(scaleX * (projection(0, column) - x * w));
        cut(1, column) = static_cast<float>(scaleY * (projection(1, column) - y * w));
    }
    BGFXViewContext result = view;
    result.SetViewId(id);
    result.SetProjectionMatrix(cut);
    result.SetViewport(QRect(QPoint(0, 0), pixels.size()));
    return result;
}

constexpr double kLargestRadius = 256.0; ///< device-independent pixels
constexpr double kFarAway = 1e6;         ///< physical pixels; no viewport reaches so far

/// The pixels that a rectangle touches, physical ones; one at least.
QRect PixelsOf(QRectF const& rect) {
    int const left = static_cast<int>(std::floor(rect.left()));
    int const top = static_cast<int>(std::floor(rect.top()));
    return {QPoint(left, top), QPoint(std::max(static_cast<int>(std::ceil(rect.right())) - 1, left),
                                      std::max(static_cast<int>(std::ceil(rect.bottom())) - 1, top))};
}

QRectF Scaled(QRectF const& rect, double ratio) {
    QRectF const normal = rect.normalized();
    return {ratio * normal.topLeft(), ratio * normal.size()};
}

WorldPosition InWorld(PickPart const& part, float const* place) {
    QMatrix4x4 const& m = part.transform;
    auto const row = [&](int i) {
        return double(m(i, 0)) * place[0] + double(m(i, 1)) * place[1] + double(m(i, 2)) * place[2] +
               double(m(i, 3));
    };
    double const w = row(3);
    return part.origin + (1.0 / w) * WorldVector{row(0), row(1), row(2)};
}

/// What the GPU draws of the scene in some pixels, and what it finds.
struct Reading {
    Reading(bgfx::ViewId id, BGFXViewContext const& view, QRect const& pixels_)
        : pixels(pixels_),
          target(pixels_.size()),
          ids(CutOut(id, view, pixels_), target.GetNumberUniform()) {}
    ~Reading() {
        if (target)
            bgfx::resetView(ids.GetView()); // which would keep the frame buffer's handle
    }
    Reading(Reading const&) = delete;
    Reading& operator=(Reading const&) = delete;

    IdPass::Numbers NumbersAt(std::size_t pixel) const {
        float const* const numbers = &images[0][pixel];
        return {numbers[0], numbers[1], numbers[2]};
    }
    float const* PlaceAt(int x, int y) const { return &images[1][IndexOf(x, y)]; }
    std::optional<IdPass::Found> FindAt(int x, int y) const { return ids.Find(NumbersAt(IndexOf(x, y))); }

    QRect pixels; ///< of the picker's target, physical ones
    PickTarget target;
    IdPass ids;
    std::array<PickPixels, 2> images;
    std::uint32_t frame = 0; ///< that draws it

private:
    std::size_t IndexOf(int x, int y) const {
        return 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(pixels.width()) +
                    static_cast<std::size_t>(x));
    }
};

/// Distance and depth decide, and before them the kind where thin ones come first.
using Rank = std::tuple<PickKind, double, double>;

/// From a place to a pixel's middle; 0 to the one that it is in.
double DistanceFrom(QPointF const& place, QPoint const& pixel) {
    bool const isInside = std::floor(place.x()) == pixel.x() && std::floor(place.y()) == pixel.y();
    return isInside ? 0.0 : std::hypot(pixel.x() + 0.5 - place.x(), pixel.y() + 0.5 - place.y());
}

std::optional<PickHit> FindNearest(Reading const& reading, QPointF const& position, double pixelRatio,
                                   PickOptions const& options) {
    std::optional<PickHit> best;
    Rank bestRank;
    for (int y = 0; y < reading.pixels.height(); ++y) {
        for (int x = 0; x < reading.pixels.width(); ++x) {
            double const distance =
                DistanceFrom(position, reading.pixels.topLeft() + QPoint(x, y)) / pixelRatio;
            if (distance > options.radius)
                continue;
            std::optional<IdPass::Found> const found = reading.FindAt(x, y);
            if (!found)
                continue;
            float const* const place = reading.PlaceAt(x, y);
            Rank const rank(options.order == PickOrder::ThinFirst ? found->part->kind : PickKind::Points,
                            distance, place[3]);
            if (best && !(rank < bestRank))
                continue;
            best = PickHit{found->element, InWorld(*found->part, place), distance, place[3]};
            bestRank = rank;
        }
    }
    return best;
}

std::vector<PickElement> ListElements(Reading const& reading) {
    std::vector<IdPass::Numbers> seen;
    for (std::size_t i = 0; i < reading.images[0].size(); i += 4)
        seen.push_back(reading.NumbersAt(i));
    std::sort(seen.begin(), seen.end());
    seen.erase(std::unique(seen.begin(), seen.end()), seen.end());
    std::vector<PickElement> elements;
    for (IdPass::Numbers const& numbers : seen) {
        if (std::optional<IdPass::Found> const found = reading.ids.Find(numbers))
            elements.push_back(found->element);
    }
    auto const place = [](PickElement const& element) {
        return std::tie(element.addition, element.instance, element.element, element.segment);
    };
    std::sort(elements.begin(), elements.end(),
              [&](auto const& a, auto const& b) { return place(a) < place(b); });
    elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
    return elements;
}

template<typename MakeText>
void WarnOf(bool isCause, zx3D::OncePerCause& once, char const* name, MakeText makeText) {
    if (isCause)
        once.Raise([&] { LogWarning(name, makeText); });
    else
        once.Clear();
}

bool HasRenderThread() {
    return zx3D::Context::GetOptions().threadMode == zx3D::ContextOptions::ThreadMode::MultiThreaded;
}

/// Until bgfx has executed everything: it runs up to one frame behind.
void FinishFrames() {
    zx3D::Context::SubmitFrame();
    if (HasRenderThread())
        zx3D::Context::SubmitFrame();
}

} // namespace

/// What is asked, and what is under way.
class Picker::Data final : public QObject,
                           public std::enable_shared_from_this<Picker::Data>,
                           private zx3D::ContextListener {
public:
    /// `finish` has null when there is nothing to be found.
    struct Request {
        BGFXViewContext view;
        QRect pixels;
        std::function<void(Reading const*)> finish;
    };

    Data(bgfx::ViewId firstView, Scene scene) : m_firstView(firstView), m_scene(std::move(scene)) {}

    void SetView(BGFXViewContext const& view, double pixelRatio);
    void Ask(Request request);
    void Follow(QObject* target, Answer answer, PickOptions const& options);

    /// Nobody is to be answered any more.
    void Abandon();

    /// A request for what is around a place, or in a rectangle.
    /// @{
    Request RequestAt(QPointF const& position, PickOptions const& options, Answer answer);
    Request RequestIn(QRectF const& rect, PickRange range, RectAnswer answer);
    /// @}

    /// Draws it, waits for it, and finishes it.
    void Execute(Request const& request);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void OnContextStopping() override;

    bool IsPossible();
    bool HasView();
    std::unique_ptr<Reading> Record(Request const& request);
    void Wake();
    void Step();
    void Start();
    void Submit();
    void Finish();
    void AskForPointer();
    void AnswerPointer(std::optional<PickHit> const& hit);

    bgfx::ViewId m_firstView;
    Scene m_scene;
    std::optional<BGFXViewContext> m_view;
    double m_pixelRatio = 1.0;

    std::deque<Request> m_waiting;
    std::optional<Request> m_current;
    std::unique_ptr<Reading> m_reading; ///< of the current one
    bool m_isSubmitted = false;         ///< by the picker
    bool m_isRead = false;
    bool m_isPosted = false;
    QMetaObject::Connection m_frames; ///< only while something is asked

    QPointer<QObject> m_followed;
    Answer m_pointerAnswer;
    PickOptions m_pointerOptions;
    std::optional<QPointF> m_pointer; ///< where it is, over the target
    bool m_isPointerNew = false;      ///< or the view: nothing was asked since
    std::optional<PickElement> m_under;

    zx3D::OncePerCause m_unsupported;
    zx3D::OncePerCause m_noView;
    zx3D::OncePerCause m_noTarget;
    zx3D::OncePerCause m_leftOut;
    zx3D::OncePerCause m_notKept;
};

void Picker::Data::SetView(BGFXViewContext const& view, double pixelRatio) {
    bool const isSame = m_view && m_pixelRatio == pixelRatio && m_view->GetViewport() == view.GetViewport() &&
                        m_view->GetOrigin() == view.GetOrigin() &&
                        m_view->GetViewMatrix() == view.GetViewMatrix() &&
                        m_view->GetProjectionMatrix() == view.GetProjectionMatrix();
    if (isSame)
        return;
    m_view = view;
    m_pixelRatio = std::isfinite(pixelRatio) && pixelRatio > 0.0 ? pixelRatio : 1.0;
    if (m_pointer) {
        m_isPointerNew = true;
        Wake();
    }
}

bool Picker::Data::HasView() {
    WarnOf(!m_view, m_noView, "picker.no-view",
           [] { return QString("Nothing is picked: the picker was not told of a view yet"); });
    return m_view.has_value();
}

bool Picker::Data::IsPossible() {
    bool const isSupported = PickTarget::IsSupported();
    WarnOf(!isSupported, m_unsupported, "picker.unsupported", [] {
        return QString("Nothing is picked: the library does not run, or the GPU cannot draw numbers and have "
                       "them read");
    });
    return isSupported;
}

Picker::Data::Request Picker::Data::RequestAt(QPointF const& position, PickOptions const& options,
                                              Answer answer) {
    PickOptions valid = options;
    valid.radius = std::isfinite(options.radius) ? std::clamp(options.radius, 0.0, kLargestRadius) : 0.0;
    QPointF const place = m_pixelRatio * position;
    double const reach = m_pixelRatio * valid.radius;
    QRect around;
    if (HasView() && std::abs(place.x()) < kFarAway && std::abs(place.y()) < kFarAway) // false for no number
        around = PixelsOf(QRectF(place - QPointF(reach, reach), place + QPointF(reach, reach))) &
                 m_view->GetViewport();
    return {m_view.value_or(BGFXViewContext()), around,
            [place, ratio = m_pixelRatio, valid, answer = std::move(answer)](Reading const* reading) {
                answer(reading != nullptr ? FindNearest(*reading, place, ratio, valid) : std::nullopt);
            }};
}

Picker::Data::Request Picker::Data::RequestIn(QRectF const& rect, PickRange range, RectAnswer answer) {
    if (!HasView())
        return {BGFXViewContext(), QRect(), [answer = std::move(answer)](Reading const*) { answer({}); }};
    QRectF const inView = Scaled(rect, m_pixelRatio) & QRectF(m_view->GetViewport());
    if (range == PickRange::All) // no pixels: what is kept is searched
        return {*m_view, QRect(), [this, view = *m_view, inView, answer = std::move(answer)](Reading const*) {
                    PickCollection collection(view, inView);
                    PickScene scene;
                    scene.m_collection = &collection;
                    m_scene(scene);
                    WarnOf(collection.HasSkipped(), m_notKept, "picker.not-kept",
                           [] { return QString("A batch is not searched: it does not keep its data"); });
                    answer(collection.GetElements());
                }};
    return {*m_view, inView.isEmpty() ? QRect() : PixelsOf(inView),
            [answer = std::move(answer)](Reading const* reading) {
                answer(reading != nullptr ? ListElements(*reading) : std::vector<PickElement>());
            }};
}

/// Null when there is nothing to draw into, or to draw.
std::unique_ptr<Reading> Picker::Data::Record(Request const& request) {
    if (request.pixels.isEmpty() || !IsPossible())
        return nullptr;
    auto reading = std::make_unique<Reading>(m_firstView, request.view, request.pixels);
    WarnOf(!reading->target, m_noTarget, "picker.no-target", [&] {
        return QString("Nothing is picked: bgfx has no textures of %1 x %2 pixels left")
            .arg(request.pixels.width())
            .arg(request.pixels.height());
    });
    if (!reading->target)
        return nullptr;
    auto const copyView = static_cast<bgfx::ViewId>(m_firstView + 1);
    BGFXViewContext const& view = reading->ids.GetView();
    bgfx::resetView(m_firstView);
    bgfx::resetView(copyView);
    bgfx::setViewMode(m_firstView, bgfx::ViewMode::Sequential);
    bgfx::setViewFrameBuffer(m_firstView, reading->target.GetFrameBuffer());
    bgfx::setViewRect(m_firstView, 0, 0, static_cast<std::uint16_t>(request.pixels.width()),
                      static_cast<std::uint16_t>(request.pixels.height()));
    bgfx::setViewTransform(m_firstView, view.GetViewMatrix().constData(),
                           view.GetProjectionMatrix().constData());
    bgfx::setViewClear(m_firstView, BGFX_CLEAR_COLOR | BGFX_CLEAR_DEPTH, 0);
    bgfx::touch(m_firstView); // cleared also where nothing is drawn
    PickScene scene;
    scene.m_ids = &reading->ids;
    m_scene(scene);
    WarnOf(reading->ids.HasLeftOut(), m_leftOut, "picker.left-out",
           [] { return QString("A batch is not picked: bgfx has no programs, uniforms or buffers left"); });
    reading->frame = reading->target.Read(copyView, reading->images);
    return reading;
}

void Picker::Data::Ask(Request request) {
    m_waiting.push_back(std::move(request));
    Wake();
}

/// Goes on as soon as the event loop runs.
void Picker::Data::Wake() {
    if (!m_frames)
        m_frames =
            connect(&FrameNotifier::Get(), &FrameNotifier::frameFinished, this, [this](quint32 number) {
                if (m_reading && static_cast<std::int32_t>(number - m_reading->frame) >= 0)
                    m_isRead = true;
                Step();
            });
    if (std::exchange(m_isPosted, true))
        return;
    auto const step = [this] {
        m_isPosted = false;
        Step();
    };
    QMetaObject::invokeMethod(this, step, Qt::QueuedConnection);
}

void Picker::Data::Step() {
    std::shared_ptr<Data> const self = shared_from_this(); // an answer may destroy the picker
    if (m_current && m_isRead)
        Finish();
    if (!m_current && m_waiting.empty())
        AskForPointer();
    if (!m_current && !m_waiting.empty())
        Start();
    Submit();
    if (!m_current && m_waiting.empty()) {
        disconnect(m_frames);
        m_frames = {};
    }
}

void Picker::Data::Start() {
    m_current = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_reading = Record(*m_current);
    m_isRead = !m_reading;
    if (m_isRead)
        Wake();
}

/// What is recorded, unless the application's next frame takes it along: while a frame is under way, the next
/// one would wait for it.
void Picker::Data::Submit() {
    if (!m_reading || m_isSubmitted || m_isRead || zx3D::Context::IsFrameInFlight())
        return;
    m_reading->frame = zx3D::Context::SubmitFrame();
    m_isSubmitted = true;
    if (HasRenderThread())
        return;
    m_isRead = true;
    Wake();
}

void Picker::Data::Finish() {
    Request const request = std::move(*m_current);
    std::unique_ptr<Reading> const reading = std::move(m_reading);
    m_current.reset();
    m_isRead = false;
    m_isSubmitted = false;
    if (reading)
        reading->target.OrderRows(reading->images);
    if (!m_waiting.empty() || m_isPointerNew)
        Wake();
    request.finish(reading.get());
}

void Picker::Data::Execute(Request const& request) {
    if (m_reading && !m_isRead)
        FinishFrames(); // which has the same views
    std::unique_ptr<Reading> const reading = Record(request);
    if (reading) {
        FinishFrames();
        reading->target.OrderRows(reading->images);
    }
    request.finish(reading.get());
}

void Picker::Data::Abandon() {
    Follow(nullptr, {}, {});
    m_waiting.clear();
    if (m_reading && zx3D::Context::IsInitialized() && !m_isRead)
        FinishFrames(); // which write into the reading's memory
    m_reading.reset();
    m_current.reset();
    disconnect(m_frames);
}

void Picker::Data::OnContextStopping() {
    std::shared_ptr<Data> const self = shared_from_this();
    if (!m_current && m_waiting.empty())
        return;
    if (m_reading && !m_isRead)
        FinishFrames();
    m_reading.reset();
    std::deque<Request> unanswered = std::exchange(m_waiting, {});
    if (m_current)
        unanswered.push_front(std::move(*m_current));
    m_current.reset();
    m_isRead = false;
    m_isSubmitted = false;
    LogWarning("picker.stopped", [&] {
        return QString("%1 requests of a picker find nothing: bgfx is shut down").arg(unanswered.size());
    });
    for (Request const& request : unanswered)
        request.finish(nullptr);
}

void Picker::Data::Follow(QObject* target, Answer answer, PickOptions const& options) {
    auto const windowOf = [](QObject* object) -> QObject* {
        auto* const native = qobject_cast<BGFXNativeWidget*>(object);
        return native != nullptr ? &native->GetWindow() : nullptr;
    };
    for (QObject* const object : {m_followed.data(), windowOf(m_followed)}) {
        if (object != nullptr)
            object->removeEventFilter(this);
    }
    m_followed = target;
    m_pointerAnswer = std::move(answer);
    m_pointerOptions = options;
    m_pointer.reset();
    m_isPointerNew = false;
    m_under.reset();
    // Input over the embedded window reaches the widget past its event filters.
    for (QObject* const object : {target, windowOf(target)}) {
        if (object != nullptr)
            object->installEventFilter(this);
    }
    if (target != nullptr && target->isWidgetType())
        static_cast<QWidget*>(target)->setMouseTracking(true);
}

bool Picker::Data::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::MouseMove) {
        auto const* const move = static_cast<QMouseEvent*>(event);
        if (move->buttons() != Qt::NoButton || m_pointer == move->position())
            return false;
        m_pointer = move->position();
    } else if (event->type() == QEvent::Leave) {
        m_pointer.reset();
    } else {
        return false;
    }
    m_isPointerNew = true;
    Wake();
    return false;
}

void Picker::Data::AskForPointer() {
    if (!std::exchange(m_isPointerNew, false))
        return;
    if (m_pointer && m_view)
        m_waiting.push_back(RequestAt(*m_pointer, m_pointerOptions,
                                      [this](std::optional<PickHit> const& hit) { AnswerPointer(hit); }));
    else
        AnswerPointer(std::nullopt);
}

void Picker::Data::AnswerPointer(std::optional<PickHit> const& hit) {
    std::optional<PickHit> const now = m_pointer ? hit : std::nullopt;
    std::optional<PickElement> const under = now ? std::optional(now->what) : std::nullopt;
    if (!m_pointerAnswer || under == m_under)
        return;
    m_under = under;
    Answer const answer = m_pointerAnswer; // which may follow something else
    answer(now);
}

Picker::Picker(bgfx::ViewId firstView, Scene scene)
    : m_data(std::make_shared<Data>(firstView, std::move(scene))) {}

Picker::~Picker() {
    m_data->Abandon();
}

void Picker::SetView(BGFXViewContext const& view, double pixelRatio) {
    m_data->SetView(view, pixelRatio);
}

void Picker::Pick(QPointF const& position, Answer answer, PickOptions const& options) {
    m_data->Ask(m_data->RequestAt(position, options, std::move(answer)));
}

void Picker::PickRect(QRectF const& rect, RectAnswer answer, PickRange range) {
    m_data->Ask(m_data->RequestIn(rect, range, std::move(answer)));
}

std::optional<PickHit> Picker::PickNow(QPointF const& position, PickOptions const& options) {
    std::optional<PickHit> result;
    m_data->Execute(m_data->RequestAt(position, options, [&result](auto const& hit) { result = hit; }));
    return result;
}

std::vector<PickElement> Picker::PickRectNow(QRectF const& rect, PickRange range) {
    std::vector<PickElement> result;
    m_data->Execute(m_data->RequestIn(rect, range, [&result](auto const& found) { result = found; }));
    return result;
}

void Picker::Follow(QObject* target, Answer answer, PickOptions const& options) {
    m_data->Follow(target, std::move(answer), options);
}

} // namespace zarvex::zx3DQt
