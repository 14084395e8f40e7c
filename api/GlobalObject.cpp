#include "api/GlobalObject.h"

#include "imgproc/common.h"
#include "imgproc/status.h"
#include "preprocess/CYuv420_Rgb.h"

namespace orva_fd {

CGlobalObject* CGlobalObject::Instance() {
    static CGlobalObject instance;
    return &instance;
}

CGlobalObject::CGlobalObject() : m_inited(false), m_mngr() {}

CGlobalObject::~CGlobalObject() {
    if (m_inited) Destroy();
}

int CGlobalObject::Initialize() {
    (void)m_mngr.Init();  // deliberate: cannot fail after a Destroy
    fd_table::init();
    pre_process::init();
    CYuv420_Rgb::init();
    m_inited = true;
    return FD_OK;
}

int CGlobalObject::Destroy() {
    m_inited = false;  // first: calls that arrive from now on are refused
    pre_process::destroy();
    CYuv420_Rgb::destroy();
    fd_table::destroy();
    (void)m_mngr.Destroy();
    return FD_OK;
}

}  // namespace orva_fd
