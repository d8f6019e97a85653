using UnrealBuildTool;

public class Corvane : ModuleRules
{
	public Corvane(ReadOnlyTargetRules Target) : base(Target)
	{
		PCHUsage = ModuleRules.PCHUsageMode.UseExplicitOrSharedPCHs;
		IWYUSupport = IWYUSupport.Full;

		// HTTP is public because public headers name its request pointers.
		PublicDependencyModuleNames.AddRange(new[] { "Core", "CoreUObject", "Engine", "HTTP" });

		// The HTTP module of 5.5 ends the process for TRACE, OPTIONS and CONNECT. Set 1 where it sends them.
		PrivateDefinitions.Add("CORVANE_HTTP_SENDS_ALL_VERBS=0");
	}
}
