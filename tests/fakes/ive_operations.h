// The six operations as one table: what each is called, which lines it prints, which pictures it is asked about. Tests
// that hold for every operation are written once over it.
#ifndef ORVA_TESTS_FAKES_IVE_OPERATIONS_H
#define ORVA_TESTS_FAKES_IVE_OPERATIONS_H

#include <string>
#include <vector>

#include "backend/hisi_ive_func.h"
#include "backend/hisi_mmz_mem.h"
#include "tests/fakes/chip_test.h"
#include "tests/support/rows.h"

namespace fakes {

// Pictures of one size for all operations.
class workbench {
public:
    static const int k_width = 96;
    static const int k_height = 66;

    workbench();

    orva_fd::hisi_ive_func ive;
    chip_picture first{k_width, k_height};
    chip_picture second{k_width, k_height};
    chip_picture result{k_width, k_height};
    chip_picture nv21{k_width, k_height, 2};
    chip_picture planes{k_width, k_height, 3};
    orva_fd::hisi_mmz_mem blob;
    std::vector<orva_fd::con_info> components;

    // Records handed to the operations; tests change them.
    fd_yuv_frame first_frame, second_frame, result_frame, nv21_frame, planes_frame;

    // Everything that an operation could have written.
    std::vector<unsigned char> written() const;
};

struct operation : support::named_row {
    standin::call submission;
    const char* function;         // "sub": do_sub, do_ive_sub
    const char* vendor_function;  // "HI_MPI_IVE_Sub"
    int refused_line;
    int unfinished_line;  // 0: a failed wait prints nothing here
    int dispatch_line;
    int sizes_line;  // 0: sizes are not compared
    int (*run)(workbench&, bool instant);
    std::vector<fd_yuv_frame*> (*images)(workbench&);  // those that are asked, in order
};

std::vector<operation> all_operations();
std::vector<operation> operations_with_sizes();

// Text of a failed submission and of a failed wait.
std::string refused_text(const operation& op, unsigned int code);
std::string unfinished_text(const operation& op, unsigned int code);

}  // namespace fakes

#endif
