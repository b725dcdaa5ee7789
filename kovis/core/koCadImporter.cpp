#include "koCadImporter.h"

#include "koMesh.h"

#include <QFile>
#include <QFileInfo>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <IGESControl_Reader.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>
#include <Poly_Triangulation.hxx>
#include <STEPControl_Reader.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <memory>

namespace {

bool isStep(const QString& suffix)
{
    return suffix == QLatin1String("step") || suffix == QLatin1String("stp");
}

bool isIges(const QString& suffix)
{
    return suffix == QLatin1String("iges") || suffix == QLatin1String("igs");
}

// The library reports on standard output; the host's output is its command line's.
void silenceTheLibrary()
{
    static const bool silenced = [] {
        Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
        return true;
    }();
    Q_UNUSED(silenced)
}

void addFace(const TopoDS_Face& face, koMesh& mesh)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = BRep_Tool::Triangulation(face, location);
    if (triangulation.IsNull())
        return;
    const gp_Trsf placement = location.Transformation();
    const quint32 offset = quint32(mesh.positions.size());
    for (int i = 1; i <= triangulation->NbNodes(); ++i) {
        const gp_Pnt point = triangulation->Node(i).Transformed(placement);
        mesh.positions.append(QVector3D(float(point.X()), float(point.Y()), float(point.Z())));
    }
    const bool reversed = face.Orientation() == TopAbs_REVERSED;
    for (int i = 1; i <= triangulation->NbTriangles(); ++i) {
        int a = 0, b = 0, c = 0;
        triangulation->Triangle(i).Get(a, b, c);
        if (reversed)
            std::swap(b, c);
        mesh.triangles << offset + quint32(a - 1) << offset + quint32(b - 1) << offset + quint32(c - 1);
    }
}

koSceneNodeDesc geometryOf(const TopoDS_Shape& shape, const QString& name)
{
    // Deflection relative to each edge's size, so small and large parts get alike detail.
    BRepMesh_IncrementalMesh(shape, 0.01, Standard_True, 0.5);
    auto mesh = std::make_shared<koMesh>();
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next())
        addFace(TopoDS::Face(face.Current()), *mesh);
    koSceneNodeDesc geometry;
    geometry.type = koNodeType::Geometry;
    geometry.name = name;
    geometry.vertices = quint32(mesh->positions.size());
    geometry.faces = quint32(mesh->triangles.size() / 3);
    geometry.mesh = std::move(mesh);
    return geometry;
}

} // namespace

bool koCadImporter::canRead(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return isStep(suffix) || isIges(suffix);
}

QStringList koCadImporter::fileFilters()
{
    return {tr("IGES (*.iges *.igs)"), tr("STEP (*.step *.stp)")};
}

QStringList koCadImporter::patterns()
{
    return {QStringLiteral("*.iges"), QStringLiteral("*.igs"), QStringLiteral("*.step"), QStringLiteral("*.stp")};
}

bool koCadImporter::read(const QString& path, koSceneNodeDesc& content, QString* reason)
{
    const auto fail = [reason](const QString& why) {
        *reason = why;
        return false;
    };
    silenceTheLibrary();
    const QString suffix = QFileInfo(path).suffix().toLower();
    std::unique_ptr<XSControl_Reader> reader;
    if (isStep(suffix))
        reader = std::make_unique<STEPControl_Reader>();
    else
        reader = std::make_unique<IGESControl_Reader>();
    content.type = koNodeType::Group;
    content.name = QFileInfo(path).completeBaseName();
    try {
        if (reader->ReadFile(QFile::encodeName(path).constData()) != IFSelect_RetDone)
            return fail(tr("the file is not valid %1").arg(isStep(suffix) ? QStringLiteral("STEP") : QStringLiteral("IGES")));
        reader->TransferRoots();
        const int shapes = reader->NbShapes();
        for (int i = 1; i <= shapes; ++i) {
            const QString name = shapes == 1 ? content.name : QStringLiteral("%1 %2").arg(content.name).arg(i);
            koSceneNodeDesc geometry = geometryOf(reader->Shape(i), name);
            if (geometry.faces > 0)
                content.children.append(std::move(geometry));
        }
    } catch (const Standard_Failure& failure) {
        return fail(QString::fromUtf8(failure.GetMessageString()));
    }
    if (content.children.isEmpty())
        return fail(tr("the file holds no surfaces"));
    return true;
}
