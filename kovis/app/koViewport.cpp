#include "koViewport.h"

#include "koSceneViewport.h"
#include "koViewportGeometry.h"

#include <kovis/koFileIOService.h>
#include <kovis/koKernelServiceFactory.h>
#include <kovis/koReferenceService.h>
#include <kovis/koTreeService.h>

#include <QLabel>
#include <QOpenGLContext>
#include <QStackedLayout>

koViewport::koViewport(koSceneStore* store, QWidget* parent)
    : QWidget(parent)
    , m_geometry(new koViewportGeometry(store, this))
    , m_layout(new QStackedLayout(this))
    , m_message(new QLabel(this))
{
    setObjectName(QStringLiteral("Viewport"));
    m_message->setObjectName(QStringLiteral("ViewportMessage"));
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_message->setStyleSheet(QStringLiteral("QLabel { background: #20262c; color: #8a96a3; padding: 24px; }"));
    m_layout->addWidget(m_message);
    // The widget would stay black without a context; asking first lets us say why.
    QOpenGLContext probe;
    if (!probe.create()) {
        showMessage(tr("No OpenGL context can be had on this display, so the 3D view cannot draw the scene."));
        return;
    }
    m_sceneView = new koSceneViewport(m_geometry, this);
    m_layout->addWidget(m_sceneView);
    m_layout->setCurrentWidget(m_sceneView);
    connect(m_sceneView, &koSceneViewport::unavailable, this, &koViewport::showMessage);
    // The host announces every scene selection here, whichever tree service it has installed.
    if (auto* references = koKernelServiceFactory::the()->getServiceOrNull<koReferenceService>())
        connect(references, &koReferenceService::sceneSelectionChanged, this, &koViewport::followSelection);
    if (auto* fileIO = koKernelServiceFactory::the()->getServiceOrNull<koFileIOService>())
        connect(fileIO, &koFileIOService::projectLoadFinished, this, &koViewport::fitAll);
    followSelection();
    fitAll();
}

koViewport::~koViewport() = default;

void koViewport::showMessage(const QString& text)
{
    m_message->setText(text);
    m_layout->setCurrentWidget(m_message);
}

void koViewport::followSelection()
{
    QSet<quint64> ids;
    if (auto* tree = koKernelServiceFactory::the()->getServiceOrNull<koTreeService>()) {
        for (const kodNode& node : tree->getSelectedNodes())
            ids.insert(node.getObjectId());
    }
    m_geometry->setSelection(ids);
}

void koViewport::fitAll()
{
    if (m_sceneView)
        m_sceneView->fitAll();
}

void koViewport::fitSelection()
{
    if (m_sceneView)
        m_sceneView->fitSelection();
}

void koViewport::setShowEdges(bool show)
{
    if (m_sceneView)
        m_sceneView->setShowEdges(show);
}
