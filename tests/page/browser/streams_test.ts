import { describe, expect, it } from "vitest";
import { useScene } from "./support/scene";
import { video } from "./support/server";

const scene = useScene();

describe("streams", () => {
    it("are shown with a live picture, their state and their numbers", async () => {
        const watched = await scene.open("streams");
        const card = watched.page.getByRole("article").filter({ hasText: "gate" });
        await card.getByText("running").waitFor();
        const picture = card.getByRole("img");
        await expect.poll(() => picture.evaluate((image: HTMLImageElement) => image.naturalWidth)).toBeGreaterThan(100);
        const first = await picture.getAttribute("src");
        await expect.poll(() => picture.getAttribute("src")).not.toBe(first);
        await expect.poll(() => card.textContent()).toMatch(/[1-9][\d.]* fps/);
        await watched.keep("streams");
    });

    it("have a view of their own, with what is in the picture", async () => {
        const watched = await scene.open("streams/gate");
        const picture = watched.page.getByRole("img", { name: "Live picture of gate" });
        await expect.poll(() => picture.evaluate((image: HTMLImageElement) => image.naturalWidth)).toBe(768);
        await watched.page.getByRole("cell", { name: "motion" }).first().waitFor();
        await watched.keep("stream");
        await watched.page.getByRole("checkbox", { name: /Boxes/ }).uncheck();
        await expect.poll(() => picture.getAttribute("src")).toContain("annotated=0");
        await expect.poll(() => picture.evaluate((image: HTMLImageElement) => image.naturalWidth)).toBe(768);
    });

    it("are added and removed", async () => {
        const watched = await scene.open("streams");
        const { page } = watched;
        // Pictures of a stream that has just gone.
        watched.allow(404);
        await page.getByRole("button", { name: "Add a stream" }).click();
        await page.getByLabel("Name").fill("yard");
        await page.getByLabel("Source").fill(video);
        await page.getByLabel("Begin anew when a file ends").check();
        await page.getByLabel("Motion", { exact: true }).check();
        await watched.keep("add_stream");
        await page.getByRole("button", { name: "Add", exact: true }).click();
        const card = page.getByRole("article").filter({ hasText: "yard" });
        await card.getByText("running").waitFor();

        await card.getByRole("link").click();
        await page.getByRole("button", { name: "Remove this stream" }).click();
        await page.getByRole("button", { name: "Remove", exact: true }).click();
        await page.getByRole("heading", { name: "Streams" }).waitFor();
        await expect.poll(() => card.count()).toBe(0);
    });

    it("that are stopped say so", async () => {
        const watched = await scene.open("streams/gate/settings");
        const { page } = watched;
        await page.getByLabel("Enabled").uncheck();
        await page.getByRole("button", { name: "Apply" }).click();
        await page.getByRole("status", { name: "gate: disabled" }).waitFor();
        await page.getByLabel("Enabled").check();
        await page.getByRole("button", { name: "Apply" }).click();
        await page.getByRole("status", { name: "gate: running" }).waitFor();
    });
});
