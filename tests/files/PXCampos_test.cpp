#include "files/PXCampos.h"

#include <gtest/gtest.h>

TEST(PXCamposTest, FieldIdsOfTaskComponentLines) {
    struct Caso {
        int tipo;
        long codigo, quantidade;
    } casos[] = {{0, 0, 0}, {1, 75, 76}, {2, 78, 79}, {3, 81, 82}, {4, 0, 0}, {255, 0, 0}};
    for (const auto& c : casos) {
        EXPECT_EQ(CPXCampos::GetCampoTarefaComponenteCodigo(static_cast<uint8_t>(c.tipo)), c.codigo) << c.tipo;
        EXPECT_EQ(CPXCampos::GetCampoTarefaComponenteQuantidade(static_cast<uint8_t>(c.tipo)), c.quantidade) << c.tipo;
    }
}
