// @vitest-environment jsdom
import { cleanup, fireEvent, render, screen, waitFor } from "@testing-library/react";
import { afterEach, describe, expect, it, vi } from "vitest";
import type { Part } from "@/api/configuration";
import { SettingsForm } from "@/form/settings_form";

const part: Part = {
    schema: {
        type: "object",
        properties: {
            source: { type: "string", description: "A file" },
            settings: {
                type: "object",
                properties: {
                    Motion: {
                        type: "object",
                        properties: {
                            minimum_area: { type: "integer", minimum: 1, maximum: 5000, description: "Smallest object" },
                            block: { type: "integer", readOnly: true },
                            mode: { type: "string", enum: ["blank", "pixelate"] },
                            outline: { type: "boolean" },
                        },
                    },
                },
            },
        },
    },
    held: {
        effective: {
            source: "a.avi",
            settings: { Motion: { minimum_area: 120, block: 4, mode: "blank", outline: false } },
        },
        own: { source: "a.avi", settings: { Motion: { minimum_area: 120 } } },
        common: { settings: { Motion: { minimum_area: 400, block: 4, mode: "blank", outline: false } } },
    },
};

const applied = vi.fn();
function show(): void {
    render(<SettingsForm part={part} root="streams.gate" followedName="the common value" onApplied={applied} />);
}

/** What the server answers to the next change; tells what was sent. */
function answer(status: number, body: unknown): { patch: () => unknown } {
    const fetched = vi.fn<typeof fetch>(() =>
        Promise.resolve(new Response(JSON.stringify(body), { status, headers: { "Content-Type": "application/json" } })),
    );
    vi.stubGlobal("fetch", fetched);
    return { patch: () => JSON.parse(String(fetched.mock.calls[0]?.[1]?.body)) };
}

function type(label: string, value: string): void {
    fireEvent.change(screen.getByLabelText(label), { target: { value } });
}
const pending = () => screen.getByRole("region", { name: "Pending changes" }).textContent ?? "";

afterEach(() => {
    cleanup();
    vi.unstubAllGlobals();
    applied.mockReset();
});

describe("the form of settings", () => {
    it("shows a change before it is applied, and applies it as a merge patch", async () => {
        const server = answer(200, { changed: ["streams.gate.settings.Motion.minimum_area"] });
        show();
        expect(pending()).toBe("");
        type("Minimum area", "900");
        expect(pending()).toContain("1 change is not applied yet");
        expect(pending()).toContain("120 \u2192 900");
        fireEvent.click(screen.getByRole("button", { name: "Apply" }));
        await waitFor(() => expect(applied).toHaveBeenCalled());
        expect(server.patch()).toEqual({ streams: { gate: { settings: { Motion: { minimum_area: 900 } } } } });
        expect(pending()).toBe("");
    });

    it("takes a setting back so that it follows the common value", async () => {
        const server = answer(200, { changed: [] });
        show();
        fireEvent.click(screen.getByRole("button", { name: /Follow the common value \(400\)/ }));
        expect((screen.getByLabelText("Minimum area") as HTMLInputElement).value).toBe("400");
        expect(pending()).toContain("120 \u2192 400 (follows)");
        fireEvent.click(screen.getByRole("button", { name: "Apply" }));
        await waitFor(() => expect(applied).toHaveBeenCalled());
        expect(server.patch()).toEqual({ streams: { gate: { settings: { Motion: { minimum_area: null } } } } });
    });

    it("says beside the field what is out of range, and sends nothing", () => {
        show();
        type("Minimum area", "0");
        expect(screen.getByRole("alert").textContent).toBe("Must be 1 to 5000");
        expect((screen.getByRole("button", { name: "Apply" }) as HTMLButtonElement).disabled).toBe(true);
        expect(pending()).toContain("a value is wrong");
        type("Minimum area", "");
        expect(screen.getByRole("alert").textContent).toBe("Must be a whole number");
        type("Minimum area", "120");
        expect(screen.queryByRole("alert")).toBeNull();
        expect(pending()).toBe("");
    });

    it("shows beside the field what the server refuses, until the value is another", async () => {
        answer(422, { status: 422, detail: "refused", faults: [{ path: "streams.gate.source", reason: "no such file" }] });
        show();
        type("Source", "b.avi");
        fireEvent.click(screen.getByRole("button", { name: "Apply" }));
        await waitFor(() => expect(screen.queryByText("no such file")).not.toBeNull());
        const field = screen.getByLabelText("Source");
        expect(field.getAttribute("aria-describedby")).toContain(screen.getByText("no such file").id);
        expect(pending()).toContain("a.avi \u2192 b.avi");
        type("Source", "c.avi");
        expect(screen.queryByText("no such file")).toBeNull();
    });

    it("shows what the server refuses elsewhere as a message of its own", async () => {
        answer(422, { status: 422, detail: "refused", faults: [{ path: "streams.yard.source", reason: "is gone" }] });
        show();
        type("Source", "b.avi");
        fireEvent.click(screen.getByRole("button", { name: "Apply" }));
        await waitFor(() => expect(screen.getByRole("alert").textContent).toContain("streams.yard.source: is gone"));
    });

    it("leaves alone what is read only, and offers what may be chosen", () => {
        show();
        expect((screen.getByLabelText("Block") as HTMLInputElement).readOnly).toBe(true);
        const options = [...(screen.getByLabelText("Mode") as HTMLSelectElement).options].map((option) => option.text);
        expect(options).toEqual(expect.arrayContaining(["blank", "pixelate"]));
        fireEvent.click(screen.getByLabelText("Outline"));
        expect(pending()).toContain("off \u2192 on");
    });

    it("undoes one change, or all", () => {
        show();
        type("Source", "b.avi");
        type("Minimum area", "900");
        fireEvent.click(screen.getByRole("button", { name: "Undo the change of Source" }));
        expect((screen.getByLabelText("Source") as HTMLInputElement).value).toBe("a.avi");
        expect(pending()).toContain("1 change");
        fireEvent.click(screen.getByRole("button", { name: "Discard" }));
        expect((screen.getByLabelText("Minimum area") as HTMLInputElement).value).toBe("120");
    });
});
