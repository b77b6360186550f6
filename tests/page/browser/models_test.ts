import { execFileSync } from "node:child_process";
import { rename } from "node:fs/promises";
import { join } from "node:path";
import { describe, it } from "vitest";
import { useScene } from "./support/scene";

const scene = useScene({
    args: (folder) => {
        execFileSync(process.env["QEL_TEST_EXAMPLE_MODEL"] ?? "", [join(folder, "models")]);
        return ["--models", join(folder, "models")];
    },
});

describe("the model of an algorithm", () => {
    it("is shown to go and to come back", async () => {
        const watched = await scene.open("algorithms");
        const card = watched.page.getByRole("article", { name: "Classifier", exact: true });
        await card.getByText("loaded", { exact: true }).waitFor();
        await watched.keep("algorithms");
        const file = join(scene.server.folder, "models/classifier/onnx/model.onnx");
        await rename(file, `${file}.away`);
        await card.getByText("unloaded", { exact: true }).waitFor();
        await watched.keep("algorithms_without_model");
        await rename(`${file}.away`, file);
        await card.getByText("loaded", { exact: true }).waitFor();
    });
});
